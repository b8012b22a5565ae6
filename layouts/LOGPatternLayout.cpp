#include "layouts/LOGPatternLayout.h"

#include <utility>

#include "core/LOGFailures.h"
#include "layouts/LOGDirectConverter.h"
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
  m_conversionPattern = pattern;
  if (m_walks > 0) {
    m_replaced.push_back(std::move(m_program));
  }
  m_program = std::move(program);
}

LOGPatternLayout::Program LOGPatternLayout::programOf(LOGPatternConverter::Chain chain) {
  std::vector<Step> steps;
  for (LOGPatternConverter* converter = chain.get(); converter != nullptr;
       converter = converter->getNext()) {
    const auto* const literal = dynamic_cast<const LOGLiteralPatternConverter*>(converter);
    if (literal == nullptr) {
      steps.push_back({converter, dynamic_cast<LOGDirectConverter*>(converter), {}});
    } else if (steps.empty()) {
      steps.push_back({nullptr, nullptr, literal->getLiteral()});
    } else {
      steps.back().literal.append(literal->getLiteral());
    }
  }
  return {std::move(chain), std::move(steps)};
}

const I18NString& LOGPatternLayout::format(LOGLoggingEvent* event) {
  if (m_walks > 0) {
    // Called by a message that is being rendered into m_line.
    I18NString text = takeBuffer();
    build(text, event);
    return keep(std::move(text));
  }
  m_line.clear();
  build(m_line, event);
  return m_line;
}

void LOGPatternLayout::build(I18NString& text, LOGLoggingEvent* event) {
  if (event == nullptr) {
    LOGLogLog::warn("LOGPatternLayout::format --- Event is NULL.");
    return;
  }
  try {
    const Walk walk(*this);
    // A replaced program moves, its steps do not.
    const Step* const end = m_program.steps.data() + m_program.steps.size();
    for (const Step* step = m_program.steps.data(); step != end; ++step) {
      if (step->converter != nullptr) {
        step->converter->appendFormatted(text, event, step->direct);
      }
      text.append(step->literal);
    }
  } catch (...) {
    logNoteFailure();
    LOGLogLog::error("LOGPatternLayout::format --- An unknown error occurred.");
  }
}

int LOGPatternLayout::ignoresThrowable() { return 1; }

std::unique_ptr<LOGPatternParser> LOGPatternLayout::createPatternParser(const I18NString& pattern) {
  return zebTranslate(SOURCE, __LINE__,
                      [&pattern] { return std::make_unique<LOGPatternParser>(pattern); });
}
