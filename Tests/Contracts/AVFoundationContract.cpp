// What every implementation of `AVFoundation` owes its callers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "Desktop/AVFoundation/DesktopAVFoundation.h"
#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Tests/Fakes/FakeAVFoundation.h"
#include "Tests/MovieCopy.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

constexpr int frames = 10;
constexpr int rate = 48000;
constexpr PixelSize size{32, 16};

/// Ten frames of red, 25 a second, and as much sound.
FakeMovie clip() {
    FakeTrack video{AVMediaType::video, {32, 16}, {}, 1000, {CMFormatDescription()}, {}, {}};
    FakeTrack audio{AVMediaType::audio,
                    {},
                    {},
                    1000,
                    {CMFormatDescription(AudioStreamBasicDescription{rate, 2})},
                    {},
                    {}};
    for (int i = 0; i < frames; ++i) {
        const auto image = std::make_shared<CVPixelBuffer>(size, CVPixelFormat::bgra8);
        video.samples.push_back(
            std::make_shared<CMSampleBuffer>(MediaTime{i, 25}, MediaTime{1, 25}, image));
        const auto sound = std::make_shared<CMAudioData>();
        sound->format = {rate, 2};
        sound->interleaved.resize(2 * rate / 25);
        audio.samples.push_back(
            std::make_shared<CMSampleBuffer>(MediaTime{i * rate / 25, rate}, sound));
    }
    return {{frames, 25}, {video, audio}, CGImage(size, 128, std::make_shared<std::uint8_t>())};
}

class AVFoundationContract : public testing::TestWithParam<bool> {
protected:
    AVFoundationContract() {
        if (isDesktop()) {
            desktop = std::make_unique<DesktopAVFoundation>(dispatch);
            const std::string make =
                "ffmpeg -v error -f lavfi -i color=red:s=32x16:r=25:d=0.4 -f lavfi -i "
                "sine=d=0.4:r=48000 -ac 2 -c:v libx264 -threads 1 -c:a pcm_s16le " +
                source.string();
            EXPECT_EQ(std::system(make.c_str()), 0);
        } else {
            fake = std::make_unique<FakeAVFoundation>(log, dispatch);
            fake->movies[source] = clip();
        }
    }

    bool isDesktop() const { return GetParam(); }
    AVFoundation& movies() {
        if (isDesktop()) return *desktop;
        return *fake;
    }
    bool exists(const std::filesystem::path& path) const {
        return isDesktop() ? std::filesystem::exists(path) : fake->written().contains(path);
    }

    AVAssetTrackRef track(AVMediaType type) { return asset->tracksWithMediaType(type).at(0); }
    AVAssetReaderTrackOutputRef output(AVMediaType type) {
        if (type == AVMediaType::audio) {
            return movies().assetReaderTrackOutput(
                track(type), AVAudioReaderSettings{AudioFormatID::linearPCM, rate});
        }
        return movies().assetReaderTrackOutput(track(type), CVPixelBufferAttributes{});
    }
    std::shared_ptr<AVAssetReader> reader() { return movies().assetReaderWithAsset(asset).value(); }
    std::shared_ptr<AVAssetWriter> writer() {
        return movies().assetWriterWithURL(target, AVFileType::quickTimeMovie).value();
    }
    AVAssetWriterInputRef videoInput() {
        return movies().assetWriterInput(
            AVVideoOutputSettings{AVVideoCodecType::h264, 32, 16, 100'000});
    }
    AVAssetWriterInputRef audioInput() {
        return movies().assetWriterInput(AVAudioOutputSettings{AudioFormatID::mpeg4AAC, 2, rate});
    }
    static CMSampleBufferRef frame(int at) {
        return std::make_shared<CMSampleBuffer>(
            MediaTime{at, 25}, MediaTime{},
            std::make_shared<CVPixelBuffer>(size, CVPixelFormat::bgra8));
    }
    static void waitForCompletion(AVAssetWriter& writer) {
        Awaited<bool> finished;
        writer.finishWritingWithCompletionHandler([&] { finished.set(true); });
        finished.get();
    }

    CallLog log;
    TemporaryFolder folder;
    const std::filesystem::path source = folder / "clip.mov";
    const std::filesystem::path target = folder / "out.mov";
    DesktopDispatch dispatch;
    std::unique_ptr<FakeAVFoundation> fake;
    std::unique_ptr<DesktopAVFoundation> desktop;
    AVAssetRef asset;
};

INSTANTIATE_TEST_SUITE_P(Both, AVFoundationContract, testing::Values(false, true),
                         [](const auto& desktop) { return desktop.param ? "Desktop" : "Fake"; });

TEST_P(AVFoundationContract, WhatIsNoMovieHasNoTracksAndNoReaderAndNoPicture) {
    folder.write("text.mov", "not a movie");
    for (const char* name : {"missing.mov", "text.mov", ""}) {
        asset = movies().assetWithURL(folder / name);
        EXPECT_TRUE(asset->tracksWithMediaType(AVMediaType::video).empty()) << name;
        EXPECT_EQ(asset->duration(), MediaTime::zero()) << name;
        const auto refused = movies().assetReaderWithAsset(asset);
        ASSERT_FALSE(refused) << name;
        EXPECT_EQ(refused.error().domain, AVFoundation::errorDomain);
        Awaited<bool> isPicture;
        movies().assetImageGeneratorWithAsset(asset)->generateCGImagesAsynchronouslyForTimes(
            {MediaTime::zero()},
            [&](MediaTime, const Result<CGImage>& image) { isPicture.set(bool(image)); });
        EXPECT_FALSE(isPicture.get()) << name;
    }
}

TEST_P(AVFoundationContract, AMovieTellsItsTracksAndGivesTheirSamplesInOrder) {
    asset = movies().assetWithURL(source);
    EXPECT_NEAR(asset->duration().seconds(), 0.4, 0.001);
    EXPECT_EQ(track(AVMediaType::video)->naturalSize(), (Size{32, 16}));
    EXPECT_EQ(track(AVMediaType::video)->preferredTransform(), AffineTransform());
    EXPECT_GT(track(AVMediaType::video)->estimatedDataRate(), 0);
    EXPECT_EQ(track(AVMediaType::audio)->formatDescriptions().at(0).streamBasicDescription(),
              (AudioStreamBasicDescription{rate, 2}));

    const auto reading = reader();
    const auto video = output(AVMediaType::video), audio = output(AVMediaType::audio);
    reading->addOutput(video);
    reading->addOutput(audio);
    EXPECT_EQ(video->copyNextSampleBuffer(), nullptr) << "read before the start";
    EXPECT_EQ(reading->status(), AVAssetReaderStatus::unknown);
    ASSERT_TRUE(reading->startReading());
    // One output to its end, before anybody looks at the other.
    std::size_t sound = 0;
    while (const auto sample = audio->copyNextSampleBuffer()) {
        EXPECT_EQ(sample->presentationTimeStamp(),
                  (MediaTime{static_cast<std::int64_t>(sound), rate}));
        sound += sample->audioData()->frameCount();
    }
    EXPECT_EQ(sound, rate * 2 / 5);
    EXPECT_EQ(reading->status(), AVAssetReaderStatus::reading);
    for (int i = 0; i < frames; ++i) {
        const auto sample = video->copyNextSampleBuffer();
        ASSERT_TRUE(sample) << i;
        EXPECT_EQ(sample->presentationTimeStamp(), (MediaTime{i, 25}));
        EXPECT_EQ(sample->imageBuffer()->size(), size);
        EXPECT_EQ(sample->imageBuffer()->format(), CVPixelFormat::bgra8);
    }
    EXPECT_EQ(video->copyNextSampleBuffer(), nullptr);
    EXPECT_EQ(reading->status(), AVAssetReaderStatus::completed);
    EXPECT_EQ(video->copyNextSampleBuffer(), nullptr);
    EXPECT_FALSE(reading->error());
}

TEST_P(AVFoundationContract, AnOutputThatDoesNotFitIsRefused) {
    asset = movies().assetWithURL(source);
    const auto reading = reader();
    const auto other = movies().assetReaderTrackOutput(
        movies().assetWithURL(source)->tracksWithMediaType(AVMediaType::video).at(0),
        CVPixelBufferAttributes{});
    EXPECT_FALSE(reading->canAddOutput(*other)) << "of another asset";
    const auto unfit =
        movies().assetReaderTrackOutput(track(AVMediaType::video), AVAudioReaderSettings{});
    EXPECT_FALSE(reading->canAddOutput(*unfit)) << "sound of a picture";
    const auto video = output(AVMediaType::video);
    reading->addOutput(video);
    EXPECT_FALSE(reading->canAddOutput(*video)) << "twice";
    reading->startReading();
    EXPECT_FALSE(reading->canAddOutput(*output(AVMediaType::audio))) << "too late";
}

TEST_P(AVFoundationContract, ACancelledReaderGivesNothingMore) {
    asset = movies().assetWithURL(source);
    const auto reading = reader();
    const auto video = output(AVMediaType::video);
    reading->addOutput(video);
    reading->cancelReading();
    EXPECT_EQ(reading->status(), AVAssetReaderStatus::unknown) << "it had not started";
    reading->startReading();
    EXPECT_NE(video->copyNextSampleBuffer(), nullptr);
    reading->cancelReading();
    EXPECT_EQ(video->copyNextSampleBuffer(), nullptr);
    EXPECT_EQ(reading->status(), AVAssetReaderStatus::cancelled);
    EXPECT_FALSE(reading->error());
}

TEST_P(AVFoundationContract, AnInputThatDoesNotFitIsRefused) {
    const auto writing = writer();
    const auto video = videoInput();
    ASSERT_TRUE(writing->canAddInput(*video));
    writing->addInput(video);
    EXPECT_FALSE(writing->canAddInput(*video)) << "twice";
    EXPECT_FALSE(writing->canAddInput(*videoInput())) << "a second of its kind";
    writing->startWriting();
    EXPECT_FALSE(writing->canAddInput(*audioInput())) << "too late";
}

TEST_P(AVFoundationContract, AMovieAppearsWholeWhenTheWriterHasCompletedAndNotBefore) {
    const auto writing = writer();
    const auto video = videoInput();
    const auto adaptor = movies().pixelBufferAdaptor(video, {CVPixelFormat::bgra8});
    EXPECT_EQ(adaptor->pixelBufferPool(), nullptr) << "nothing is being written";
    EXPECT_FALSE(video->isReadyForMoreMediaData());
    writing->addInput(video);
    EXPECT_FALSE(video->isReadyForMoreMediaData());
    ASSERT_TRUE(writing->startWriting());
    EXPECT_FALSE(writing->startWriting()) << "only once";
    writing->startSessionAtSourceTime(MediaTime::zero());
    for (int i = 0; i < 60; ++i) {
        EXPECT_TRUE(video->isReadyForMoreMediaData()) << "the only one is always ready";
        const auto buffer = adaptor->pixelBufferPool()->createPixelBuffer();
        ASSERT_TRUE(buffer);
        EXPECT_EQ(buffer->size(), size);
        EXPECT_TRUE(adaptor->appendPixelBuffer(buffer, {i, 25}));
    }
    video->markAsFinished();
    EXPECT_FALSE(video->isReadyForMoreMediaData());
    EXPECT_FALSE(adaptor->appendPixelBuffer(frame(60)->imageBuffer(), {60, 25}));
    EXPECT_FALSE(exists(target));
    EXPECT_EQ(writing->status(), AVAssetWriterStatus::writing);
    waitForCompletion(*writing);
    EXPECT_EQ(writing->status(), AVAssetWriterStatus::completed);
    EXPECT_TRUE(exists(target));
    EXPECT_EQ(adaptor->pixelBufferPool(), nullptr);
}

TEST_P(AVFoundationContract, TwoTracksDrainSideBySideThroughTheirBlocks) {
    const MovieCopyResult result = copyMovie(movies(), dispatch, source, target);
    EXPECT_EQ(result.reader, AVAssetReaderStatus::completed);
    EXPECT_EQ(result.writer, AVAssetWriterStatus::completed);
    EXPECT_FALSE(result.error);
    EXPECT_TRUE(exists(target));
}

TEST_P(AVFoundationContract, AfterACancelOrAFailureADrainEndsItselfAndNoFileIsThere) {
    for (const bool fails : {false, true}) {
        const auto writing = writer();
        const auto video = videoInput(), audio = audioInput();
        writing->addInput(video);
        writing->addInput(audio);
        writing->startWriting();
        writing->startSessionAtSourceTime(MediaTime::zero());
        // The video waits for the sound, of which there is none yet.
        for (int i = 0; i < 10 && video->isReadyForMoreMediaData(); ++i) {
            EXPECT_TRUE(video->appendSampleBuffer(frame(i)));
        }
        Awaited<bool> ended;
        const auto queue = dispatch.makeSerialQueue("drain", QualityOfService::userInitiated);
        audio->requestMediaDataWhenReadyOnQueue(queue, [&, audio] {
            if (writing->status() == AVAssetWriterStatus::writing) return;
            EXPECT_TRUE(audio->isReadyForMoreMediaData());
            audio->markAsFinished();
            ended.set(true);
        });
        if (fails) {
            EXPECT_FALSE(video->appendSampleBuffer(frame(0))) << "time went back";
        } else {
            writing->cancelWriting();
        }
        ended.get();
        EXPECT_TRUE(video->isReadyForMoreMediaData());
        EXPECT_FALSE(video->appendSampleBuffer(frame(100)));
        waitForCompletion(*writing);
        EXPECT_EQ(writing->status(),
                  fails ? AVAssetWriterStatus::failed : AVAssetWriterStatus::cancelled);
        ASSERT_EQ(writing->error().has_value(), fails);
        if (fails) {
            EXPECT_EQ(writing->error()->code, static_cast<int>(AVErrorCode::invalidSample));
        }
        EXPECT_FALSE(exists(target));
    }
}

TEST_P(AVFoundationContract, AMovieWithoutASampleFails) {
    const auto writing = writer();
    writing->addInput(videoInput());
    writing->startWriting();
    waitForCompletion(*writing);
    EXPECT_EQ(writing->status(), AVAssetWriterStatus::failed);
    EXPECT_EQ(writing->error()->code, static_cast<int>(AVErrorCode::noDataCaptured));
    EXPECT_FALSE(exists(target));
}

TEST_P(AVFoundationContract, AWriterThatGoesLeavesNoFileAndLetsGoOfItsBlocks) {
    auto writing = writer();
    const auto video = videoInput();
    writing->addInput(video);
    writing->startWriting();
    writing->startSessionAtSourceTime(MediaTime::zero());
    const auto held = std::make_shared<int>();
    const auto queue = dispatch.makeSerialQueue("drain", QualityOfService::userInitiated);
    const auto called = dispatch.makeSemaphore(0);
    video->requestMediaDataWhenReadyOnQueue(queue, [called, held, video] { called->signal(); });
    called->wait();
    EXPECT_TRUE(video->appendSampleBuffer(frame(0)));
    called->wait();
    writing.reset();
    // The block may still be on its way off the queue; one that is kept makes this hang.
    while (held.use_count() > 1) {
        queue->async([called] { called->signal(); });
        called->wait();
    }
    EXPECT_FALSE(exists(target));
    EXPECT_FALSE(video->appendSampleBuffer(frame(1)));
}

TEST_P(AVFoundationContract, TheLastReferenceToAWriterMayGoInItsCompletion) {
    auto writing = writer();
    const auto video = videoInput();
    writing->addInput(video);
    writing->startWriting();
    writing->startSessionAtSourceTime(MediaTime::zero());
    video->appendSampleBuffer(frame(0));
    Awaited<AVAssetWriterStatus> finished;
    AVAssetWriter& raw = *writing;
    raw.finishWritingWithCompletionHandler([&, held = std::move(writing)]() mutable {
        const auto status = held->status();
        held.reset();
        finished.set(status);
    });
    EXPECT_EQ(finished.get(), AVAssetWriterStatus::completed);
    EXPECT_TRUE(exists(target));
}

TEST_P(AVFoundationContract, AnImageGeneratorGivesAPictureForEachTimeWithoutItself) {
    asset = movies().assetWithURL(source);
    const auto done = dispatch.makeSemaphore(0);
    std::vector<MediaTime> asked;
    movies().assetImageGeneratorWithAsset(asset)->generateCGImagesAsynchronouslyForTimes(
        {MediaTime::zero(), {1, 5}}, [&](MediaTime time, const Result<CGImage>& image) {
            asked.push_back(time);
            EXPECT_TRUE(image && image->size() == size);
            done->signal();
        });
    done->wait();
    done->wait();
    EXPECT_EQ(asked, (std::vector<MediaTime>{MediaTime::zero(), {1, 5}}));
}

}  // namespace
}  // namespace quillmere
