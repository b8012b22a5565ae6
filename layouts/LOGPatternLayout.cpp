#include "layouts/LOGPatternLayout.h"

#include <utility>

#include "core/LOGFailures.h"
#include "layouts/LOGLiteralPatternConverter.h"
#include "layouts/LOGPatternParser.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBTranslate.h"

namespace {

constexpr const char* SOURCE = "LOGPatternLayout";

}  // namespace

const I18NString LOGPatternLayout::DEFAULT_CONVERSION_PATTERN = "%m%n";
const I18NString LOGPatternLayout::TTCC_CONVERSION_PATTERN = "%r [%t] %p %c %x - %m%n";

/// Keeps the converters while they are asked.
class LOGPatternLayout::Walk {
 public:
  explicit Walk(LOGPatternLayout& layout) : m_layout(layout) { ++m_layout.m_walks; }
  Walk(const Walk&) = delete;
  Walk& operator=(const Walk&) = delete;
  ~Walk() {
    if (--m_layout.m_walks == 0) {
      m_layout.m_replaced.clear();
    }
  }

 private:
  LOGPatternLayout& m_layout;
};

LOGPatternLayout::LOGPatternLayout() : LOGPatternLayout(DEFAULT_CONVERSION_PATTERN) {}

LOGPatternLayout::LOGPatternLayout(const I18NString& pattern) {
  instance(SOURCE);
  setConversionPattern(pattern);
}

LOGPatternLayout::~LOGPatternLayout() = default;

void LOGPatternLayout::setConversionPattern(const I18NString& pattern) {
  const ZEBThreadGuard guard =
      logReportingAndPassing("LOGPatternLayout::setConversionPattern -- unable to lock mutex",
                             [this] { return ZEBThreadGuard(getCriticalSection()); });
  Program program = programOf(LOGPatternConverter::Chain(createPatternParser(pattern)->parse()));
  I18NString kept = pattern;
  if (m_walks > 0) {
    m_replaced.push_back(std::move(m_program));
  }
  // Nothing below fails: the pattern is always that of the program.
  m_conversionPattern = std::move(kept);
  m_program = std::move(program);
}

LOGPatternLayout::Program LOGPatternLayout::programOf(LOGPatternConverter::Chain chain) {
  std::vector<Step> steps;
  for (LOGPatternConverter* converter = chain.get(); converter != nullptr;
       converter = converter->getNext()) {
    const auto* const literal = dynamic_cast<const LOGLiteralPatternConverter*>(converter);
    if (literal == nullptr) {
      auto* const direct = dynamic_cast<LOGDirectConverter*>(converter);
      const LOGEventPart part = direct == nullptr ? LOGEventPart::NONE : direct->part();
      steps.push_back({converter, direct, part, true, {}});
    } else {
      if (steps.empty()) {
        steps.emplace_back();
      }
      steps.back().literal.append(literal->getLiteral());
      steps.back().isLiteralShort = I18NWriter::isShort(steps.back().literal);
    }
  }
  return {std::move(chain), std::move(steps)};
}

LOG4ZEB_HOT const I18NString& LOGPatternLayout::format(LOGLoggingEvent* event) {
  if (I18NString* const target = takeTarget()) {
    build(*target, event);
    return *target;
  }
  return buildInBuffer(event);
}

const I18NString& LOGPatternLayout::buildInBuffer(LOGLoggingEvent* event) {
  I18NString text = takeBuffer();
  build(text, event);
  return keep(std::move(text));
}

LOG4ZEB_HOT void LOGPatternLayout::build(I18NString& text, LOGLoggingEvent* event) {
  if (event == nullptr) {
    LOGLogLog::warn("LOGPatternLayout::format --- Event is NULL.");
    return;
  }
  try {
    const Walk walk(*this);
    // A replaced program moves, its steps do not.
    const Step* const end = m_program.steps.data() + m_program.steps.size();
    I18NWriter line(text);
    bool hasWidths = LOGPatternConverter::hasWidths();
    for (const Step* step = m_program.steps.data(); step != end; ++step) {
      if (const I18NString* const part = hasWidths ? nullptr : logTextOf(step->part, *event)) {
        line.append(*part);
      } else if (step->converter != nullptr) {
        line.close();
        if (step->direct != nullptr && !hasWidths) {
          step->direct->appendText(text, event);
        } else {
          step->converter->appendFormatted(text, event, step->direct);
        }
        line.open();
        hasWidths = LOGPatternConverter::hasWidths();  // a message may parse a pattern
      }
      if (step->isLiteralShort) {
        line.appendShort(step->literal);
      } else {
        line.append(step->literal);
      }
    }
  } catch (...) {
    logNoteFailure();
    LOGLogLog::error("LOGPatternLayout::format --- An unknown error occurred.");
  }
}

std::unique_ptr<LOGPatternParser> LOGPatternLayout::createPatternParser(const I18NString& pattern) {
  return zebTranslate(SOURCE, __LINE__,
                      [&pattern] { return std::make_unique<LOGPatternParser>(pattern); });
}
