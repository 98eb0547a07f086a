#include "Desktop/AVFoundation/MovieError.h"

#include <cerrno>

extern "C" {
#include <libavutil/error.h>
}

namespace quillmere {
namespace {

std::string reason(int answer) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(answer, text, sizeof text);
    return text;
}

}  // namespace

Error readingError(int answer) {
    switch (answer) {
        case AVERROR(ENOMEM):
            return movieOutOfMemory();
        case AVERROR(ENOENT):
            return movieError(AVErrorCode::fileFormatNotRecognized, "The movie does not exist.");
        case AVERROR(EACCES):
        case AVERROR(EPERM):
            return movieError(AVErrorCode::fileFormatNotRecognized,
                              "The movie may not be read. Check its permissions.");
        case AVERROR_DECODER_NOT_FOUND:
            return movieError(AVErrorCode::decoderNotFound,
                              "Nothing here can decode this kind of movie.");
        default:
            return movieError(AVErrorCode::fileFailedToParse,
                              "The movie is damaged, incomplete or of an unknown kind (%@).",
                              {reason(answer)});
    }
}

Error writingError(int answer) {
    switch (answer) {
        case AVERROR(ENOMEM):
            return movieOutOfMemory();
        case AVERROR(ENOSPC):
        case AVERROR(EDQUOT):
            return movieError(AVErrorCode::diskFull,
                              "There is not enough space on the disk for the movie.");
        case AVERROR(EEXIST):
            return movieError(AVErrorCode::fileAlreadyExists,
                              "There is a file of the movie's name already.");
        default:
            return movieError(AVErrorCode::unknown, "The movie could not be written (%@).",
                              {reason(answer)});
    }
}

}  // namespace quillmere
