#include "platform/ZEBConfigurationFactory.h"

#include <atomic>
#include <new>

namespace {

class UnchangedPaths : public IZEBConfiguration {
 public:
  I18NString resolvePath(const I18NString& name) const override { return name; }
};

std::atomic<const IZEBConfiguration*> g_configuration{nullptr};

}  // namespace

IZEBConfiguration::~IZEBConfiguration() = default;

const IZEBConfiguration* ZEBConfigurationFactory::getInstance() noexcept {
  // Never destroyed: the destructors of the program's static objects may still open files.
  alignas(UnchangedPaths) static unsigned char memory[sizeof(UnchangedPaths)];
  static const IZEBConfiguration* const unchanged = new (memory) UnchangedPaths;
  const IZEBConfiguration* const configured = g_configuration.load();
  return configured == nullptr ? unchanged : configured;
}

void ZEBConfigurationFactory::setInstance(const IZEBConfiguration* configuration) noexcept {
  g_configuration.store(configuration);
}
