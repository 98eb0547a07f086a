// The services that watch the application from outside.
#pragma once

namespace quillmere {

class FIRApp {
public:
    virtual ~FIRApp() = default;

    /// Sets up what records events and crashes and what fetches remote values. Called once in a
    /// process, on the main thread, before any of these is used.
    virtual void configure() = 0;
};

}  // namespace quillmere
