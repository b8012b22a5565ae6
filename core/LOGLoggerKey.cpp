#include "core/LOGLoggerKey.h"

#include "core/LOGLogger.h"
#include "platform/ZEBAssertError.h"

namespace {

constexpr const char* SOURCE = "LOGLoggerKey";

}  // namespace

LOGLoggerKey::LOGLoggerKey(const I18NString& name) : m_string(name), m_hashCode(name.hash()) {}

LOGLoggerKey::~LOGLoggerKey() = default;

int LOGLoggerKey::equals(const LOGLoggerKey* rArg) const {
  ZEB_ASSERT(rArg, SOURCE, 41);
  return m_string == rArg->m_string ? 1 : 0;
}

int LOGLoggerKey::equals(const LOGObject* rArg) const {
  ZEB_ASSERT(rArg, SOURCE, 41);
  const auto* const logger = dynamic_cast<const LOGLogger*>(rArg);
  return logger != nullptr && m_string == logger->getName() ? 1 : 0;
}
