#include "Desktop/Application/SleepInhibitor.h"

#include <fcntl.h>

#include <cstdint>

#include "Desktop/Application/SystemBusHandles.h"

namespace quillmere {
namespace {

constexpr std::uint64_t mostMicroseconds = 1'000'000;

/// Not open where nobody inhibits. The lock lasts as long as the file.
FileDescriptor lockOfLoginManager() {
    sd_bus* opened = nullptr;
    if (sd_bus_open_system(&opened) < 0) return FileDescriptor();
    const SystemBus bus(opened);
    sd_bus_set_method_call_timeout(bus.get(), mostMicroseconds);

    sd_bus_message* answered = nullptr;
    if (sd_bus_call_method(bus.get(), "org.freedesktop.login1", "/org/freedesktop/login1",
                           "org.freedesktop.login1.Manager", "Inhibit", nullptr, &answered, "ssss",
                           "sleep:idle", "Quillmere", "Enlarging pictures", "block") < 0) {
        return FileDescriptor();
    }
    const BusMessage answer(answered);
    int borrowed = -1;
    if (sd_bus_message_read(answer.get(), "h", &borrowed) < 0) return FileDescriptor();
    return FileDescriptor(fcntl(borrowed, F_DUPFD_CLOEXEC, 0));
}

}  // namespace

void SleepInhibitor::inhibit() {
    const std::lock_guard lock(mutex_);
    if (!held_.isOpen()) held_ = lockOfLoginManager();
}

void SleepInhibitor::release() {
    const std::lock_guard lock(mutex_);
    held_ = FileDescriptor();
}

}  // namespace quillmere
