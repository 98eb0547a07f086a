// What the system bus's library hands out, in hands that give it back.
#pragma once

#include <systemd/sd-bus.h>

#include <memory>

namespace quillmere {

struct SystemBusDeleter {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
using SystemBus = std::unique_ptr<sd_bus, SystemBusDeleter>;

struct BusMessageDeleter {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, BusMessageDeleter>;

}  // namespace quillmere
