#include "Desktop/AVFoundation/DesktopAVFoundation.h"
#include "Desktop/AVFoundation/MovieModule.h"
#include "Desktop/AudioToolbox/DesktopAudioToolbox.h"

extern "C" const quillmere::MovieModule quillmereMovieModule;

const quillmere::MovieModule quillmereMovieModule{
    quillmere::readMovieTags,
    [](quillmere::Dispatch& dispatch) -> std::unique_ptr<quillmere::AVFoundation> {
        return std::make_unique<quillmere::DesktopAVFoundation>(dispatch);
    },
    []() -> std::unique_ptr<quillmere::AudioToolbox> {
        return std::make_unique<quillmere::DesktopAudioToolbox>();
    },
    quillmere::surveyMovie,
};
