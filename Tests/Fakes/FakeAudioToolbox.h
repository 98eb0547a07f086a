#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "Platform/AudioToolbox/AudioToolbox.h"

namespace quillmere {

/// Says what a test sets; fails where it sets nothing.
class FakeAudioToolbox final : public AudioToolbox {
public:
    std::optional<std::size_t> size;  // of the answer in bytes
    std::optional<std::vector<AudioValueRange>> ranges;

    /// Both answers, in step.
    void setRanges(std::vector<AudioValueRange> all) {
        size = all.size() * sizeof(AudioValueRange);
        ranges = std::move(all);
    }

    Result<std::size_t> audioFormatGetPropertyInfo(AudioFormatPropertyID, AudioFormatID) override {
        if (!size) return failure();
        return *size;
    }

    Result<std::vector<AudioValueRange>> audioFormatGetProperty(AudioFormatPropertyID,
                                                                AudioFormatID,
                                                                std::size_t count) override {
        if (!ranges) return failure();
        std::vector<AudioValueRange> answer = *ranges;
        if (answer.size() > count) answer.resize(count);
        return answer;
    }

private:
    static Error failure() { return {"NSOSStatusErrorDomain", -50, "There is no such format."}; }
};

}  // namespace quillmere
