#include "platform/Services.h"

#include <atomic>

#include "platform/SystemServices.h"

namespace platform {
namespace {

const Services& SystemServices() {
  static const Services services = {&SystemRegistry(),    &SystemProfiles(), &SystemFiles(),
                                    &SystemMutexes(),     &SystemProcess(),  &SystemDesktop(),
                                    &SystemTerminal(),    &SystemModules(),  &SystemFonts(),
                                    &SystemSharedMemory()};
  return services;
}

std::atomic<const Services*> inForce{nullptr};

}  // namespace

const Services& CurrentServices() {
  const Services* replaced = inForce.load(std::memory_order_acquire);
  return replaced ? *replaced : SystemServices();
}

ScopedServices::ScopedServices(const Services& replacement)
    : previous(inForce.exchange(&replacement, std::memory_order_acq_rel)) {}

ScopedServices::~ScopedServices() {
  inForce.store(previous, std::memory_order_release);
}

}  // namespace platform
