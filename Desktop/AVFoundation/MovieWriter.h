// A writer of QuickTime files, its inputs and their adaptors.
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "Desktop/AVFoundation/PixelBufferPool.h"
#include "Desktop/AVFoundation/WritingState.h"
#include "Platform/AVFoundation/AVAssetWriter.h"

namespace quillmere {

class MovieWriterInput final : public AVAssetWriterInput {
public:
    explicit MovieWriterInput(AVWriterOutputSettings settings) : settings_(std::move(settings)) {}

    /// Nothing here depends on it: an input never drops a sample.
    void setExpectsMediaDataInRealTime(bool) override {}
    void setTransform(const AffineTransform& transform) override { transform_ = transform; }
    bool isReadyForMoreMediaData() const override;
    void markAsFinished() override;
    bool appendSampleBuffer(const CMSampleBufferRef& sample) override;
    void requestMediaDataWhenReadyOnQueue(std::shared_ptr<DispatchQueue> queue,
                                          Block block) override;

    AVMediaType mediaType() const;
    bool canBeEncoded() const;
    /// The size of a video track's frames; nothing for sound.
    std::optional<PixelSize> frameSize() const;
    const std::shared_ptr<WritingState>& writing() const { return writing_; }
    /// Becomes a track of the writer behind `writing`.
    void attach(std::shared_ptr<WritingState> writing);

private:
    AVWriterOutputSettings settings_;
    AffineTransform transform_;
    std::shared_ptr<WritingState> writing_;  // set when the input is added
    WritingState::TrackNumber track_ = 0;
};

class MoviePixelBufferAdaptor final : public AVAssetWriterInputPixelBufferAdaptor {
public:
    MoviePixelBufferAdaptor(std::shared_ptr<MovieWriterInput> input,
                            const CVPixelBufferAttributes& attributes);

    std::shared_ptr<CVPixelBufferPool> pixelBufferPool() override;
    bool appendPixelBuffer(const CVPixelBufferRef& buffer, MediaTime presentationTime) override;

private:
    std::shared_ptr<MovieWriterInput> input_;
    std::shared_ptr<PixelBufferPool> pool_;  // null for sound
};

class MovieWriter final : public AVAssetWriter {
public:
    MovieWriter(std::filesystem::path path, Dispatch& dispatch);
    ~MovieWriter() override { writing_->abandon(); }

    bool canAddInput(const AVAssetWriterInput& input) const override;
    void addInput(const AVAssetWriterInputRef& input) override;
    bool startWriting() override { return writing_->start(); }
    void startSessionAtSourceTime(MediaTime time) override { writing_->startSession(time); }
    void cancelWriting() override { writing_->cancel(); }
    void finishWritingWithCompletionHandler(std::function<void()> handler) override {
        writing_->finish(std::move(handler));
    }
    AVAssetWriterStatus status() const override { return writing_->status(); }
    std::optional<Error> error() const override { return writing_->error(); }

private:
    std::shared_ptr<WritingState> writing_;
    std::vector<std::shared_ptr<MovieWriterInput>> inputs_;
};

}  // namespace quillmere
