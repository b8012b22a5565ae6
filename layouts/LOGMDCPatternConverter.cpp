#include "layouts/LOGMDCPatternConverter.h"

#include "platform/ZEBAssertError.h"

namespace {

LOGFormattingInfo* checked(LOGFormattingInfo* formattingInfo) {
  ZEB_ASSERT(formattingInfo, "LOGPatternParserUtils", __LINE__);
  return formattingInfo;
}

}  // namespace

LOGMDCPatternConverter::LOGMDCPatternConverter(LOGFormattingInfo* formattingInfo,
                                               const I18NString& key)
    : LOGPatternConverter(checked(formattingInfo)), m_key(key) {}
