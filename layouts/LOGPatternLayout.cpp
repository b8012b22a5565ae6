#include "layouts/LOGPatternLayout.h"

#include <typeinfo>
#include <utility>

#include "core/LOGFailures.h"
#include "layouts/LOGBasicPatternConverter.h"
#include "layouts/LOGDatePatternConverter.h"
#include "layouts/LOGDirectConverter.h"
#include "layouts/LOGLiteralPatternConverter.h"
#include "layouts/LOGLoggerPatternConverter.h"
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
      steps.push_back(
          {converter, dynamic_cast<LOGDirectConverter*>(converter), kindOf(*converter), {}});
    } else if (steps.empty()) {
      steps.push_back({nullptr, nullptr, Kind::Other, literal->getLiteral()});
    } else {
      steps.back().literal.append(literal->getLiteral());
    }
  }
  return {std::move(chain), std::move(steps)};
}

LOGPatternLayout::Kind LOGPatternLayout::kindOf(const LOGPatternConverter& converter) {
  const std::type_info& type = typeid(converter);
  return type == typeid(LOGBasicPatternConverter)    ? Kind::Basic
         : type == typeid(LOGDatePatternConverter)   ? Kind::Date
         : type == typeid(LOGLoggerPatternConverter) ? Kind::Logger
                                                     : Kind::Other;
}

const I18NString& LOGPatternLayout::format(LOGLoggingEvent* event) {
  I18NString text = takeBuffer();
  build(text, event);
  return keep(std::move(text));
}

LOG4ZEB_HOT void LOGPatternLayout::formatInto(I18NString& text, LOGLoggingEvent* event) {
  text.clear();
  build(text, event);
}

inline void LOGPatternLayout::append(I18NString& text, LOGLoggingEvent* event, const Step& step) {
  if (step.kind == Kind::Other || LOGPatternConverter::hasWidths()) {
    step.converter->appendFormatted(text, event, step.direct);
    return;
  }
  // Without widths straight to its place.
  switch (step.kind) {
    case Kind::Basic:
      static_cast<LOGBasicPatternConverter*>(step.converter)
          ->LOGBasicPatternConverter::appendText(text, event);
      break;
    case Kind::Date:
      static_cast<LOGDatePatternConverter*>(step.converter)
          ->LOGDatePatternConverter::appendText(text, event);
      break;
    default:
      static_cast<LOGLoggerPatternConverter*>(step.converter)
          ->LOGLoggerPatternConverter::appendText(text, event);
  }
}

LOG4ZEB_HOT LOG4ZEB_FLAT void LOGPatternLayout::build(I18NString& text, LOGLoggingEvent* event) {
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
        append(text, event, *step);
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
