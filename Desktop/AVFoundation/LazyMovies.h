// The movie adapters of a program, made when they are first asked for.
#pragma once

#include <memory>
#include <mutex>

#include "Desktop/AVFoundation/MovieModule.h"

namespace quillmere {

/// Both are null where the program came without its movie module. Any thread.
class LazyMovies {
public:
    /// `dispatch` must outlive this.
    explicit LazyMovies(Dispatch& dispatch) : dispatch_(dispatch) {}

    AVFoundation* avFoundation() {
        make();
        return avFoundation_.get();
    }
    AudioToolbox* audioToolbox() {
        make();
        return audioToolbox_.get();
    }

private:
    void make() {
        std::call_once(once_, [this] {
            const MovieModule* module = loadMovieModule();
            if (!module) return;
            avFoundation_ = module->makeAVFoundation(dispatch_);
            audioToolbox_ = module->makeAudioToolbox();
        });
    }

    Dispatch& dispatch_;
    std::once_flag once_;
    std::unique_ptr<AVFoundation> avFoundation_;
    std::unique_ptr<AudioToolbox> audioToolbox_;
};

}  // namespace quillmere
