// The inhibitor on a bus of the test's own, with a login manager that only knows sleep.
#include "Desktop/Application/SleepInhibitor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <string>
#include <thread>

namespace quillmere {
namespace {

/// A `dbus-daemon` that lives as long as this.
class PrivateBus {
public:
    PrivateBus() {
        std::FILE* started = popen(
            "exec dbus-daemon --session --fork --nosyslog --print-address=1 --print-pid=1", "r");
        std::array<char, 512> line{};
        if (started && std::fgets(line.data(), line.size(), started)) address_ = line.data();
        if (started && std::fgets(line.data(), line.size(), started)) pid_ = std::stoi(line.data());
        if (started) pclose(started);
        if (pid_ == 0) ADD_FAILURE() << "no bus";
        while (!address_.empty() && address_.back() == '\n') address_.pop_back();
    }
    ~PrivateBus() {
        if (pid_ > 0) kill(pid_, SIGTERM);
    }

    const std::string& address() const { return address_; }

private:
    std::string address_;
    pid_t pid_ = 0;
};

/// Answers `Inhibit` with the writing end of a pipe, whose reading end says when it is let go.
class FakeLoginManager {
public:
    explicit FakeLoginManager(const std::string& address, bool refuses) : refuses_(refuses) {
        EXPECT_EQ(pipe2(pipe_.data(), O_CLOEXEC), 0);
        EXPECT_GE(sd_bus_new(&bus_), 0);
        sd_bus_set_address(bus_, address.c_str());
        sd_bus_set_bus_client(bus_, 1);
        sd_bus_negotiate_fds(bus_, 1);
        EXPECT_GE(sd_bus_start(bus_), 0);
        EXPECT_GE(sd_bus_add_object(bus_, nullptr, "/org/freedesktop/login1", answer, this), 0);
        EXPECT_GE(sd_bus_request_name(bus_, "org.freedesktop.login1", 0), 0);
        thread_ = std::thread([this] {
            while (!ended_) {
                while (sd_bus_process(bus_, nullptr) > 0) continue;
                sd_bus_wait(bus_, 10'000);
            }
        });
    }
    ~FakeLoginManager() {
        ended_ = true;
        thread_.join();
        sd_bus_flush_close_unref(bus_);
        if (!given_ || refuses_) close(pipe_[1]);
        close(pipe_[0]);
    }

    const std::string& what() const { return what_; }

    /// Whether every holder of the lock has let go; waits for it.
    bool isLetGo(int milliseconds) const {
        pollfd polled{pipe_[0], POLLIN, 0};
        return poll(&polled, 1, milliseconds) == 1 && (polled.revents & POLLHUP);
    }

private:
    static int answer(sd_bus_message* message, void* self, sd_bus_error*) {
        auto* manager = static_cast<FakeLoginManager*>(self);
        if (!sd_bus_message_is_method_call(message, nullptr, "Inhibit")) return 0;
        const char* what = "";
        sd_bus_message_read(message, "s", &what);
        manager->what_ = what;
        if (manager->refuses_) {
            return sd_bus_reply_method_errorf(message, SD_BUS_ERROR_ACCESS_DENIED, "no");
        }
        const int sent = sd_bus_reply_method_return(message, "h", manager->pipe_[1]);
        sd_bus_flush(manager->bus_);
        close(manager->pipe_[1]);
        manager->given_ = true;
        return sent;
    }

    const bool refuses_;
    std::array<int, 2> pipe_{-1, -1};
    sd_bus* bus_ = nullptr;
    std::string what_;
    bool given_ = false;
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

TEST(SleepInhibitor, HoldsTheLockUntilItIsReleasedAndTakesItOnce) {
    const PrivateBus bus;
    setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().c_str(), 1);
    const FakeLoginManager manager(bus.address(), false);
    SleepInhibitor inhibitor;
    inhibitor.inhibit();
    inhibitor.inhibit();
    EXPECT_EQ(manager.what(), "sleep:idle");
    EXPECT_FALSE(manager.isLetGo(0));
    inhibitor.release();
    EXPECT_TRUE(manager.isLetGo(5000));
}

TEST(SleepInhibitor, DoesWithoutABusAndWithoutAManagerThatAgrees) {
    SleepInhibitor inhibitor;
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    inhibitor.inhibit();
    inhibitor.release();

    const PrivateBus bus;
    setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().c_str(), 1);
    inhibitor.inhibit();
    const FakeLoginManager manager(bus.address(), true);
    inhibitor.inhibit();
    EXPECT_EQ(manager.what(), "sleep:idle");
    inhibitor.release();
}

}  // namespace
}  // namespace quillmere
