// Saving one result while the next picture is already being enlarged.
#pragma once

#include <functional>

#include "Base/Geometry.h"
#include "Base/Result.h"
#include "Desktop/Dispatch/DesktopDispatch.h"

namespace quillmere::cli {

/// At most one save is under way, so that at most one finished picture waits in memory and the
/// outcomes come in the order of the saves. All operations belong to the main thread.
class BackgroundSave {
public:
    /// Encodes and writes; gives the result's size. Runs on a global queue.
    using Work = std::function<Result<PixelSize>()>;
    /// Runs on the main thread, whoever pumps its queue.
    using Report = std::function<void(const Result<PixelSize>&)>;

    explicit BackgroundSave(DesktopDispatch& dispatch) : dispatch_(dispatch) {}
    BackgroundSave(const BackgroundSave&) = delete;
    BackgroundSave& operator=(const BackgroundSave&) = delete;

    /// Waits for an earlier save and returns while this one runs.
    void start(Work work, Report report);

    /// Pumps the main queue until no save is under way and the last one has been reported.
    void finish();

private:
    DesktopDispatch& dispatch_;
    bool running_ = false;
};

}  // namespace quillmere::cli
