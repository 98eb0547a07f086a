#include "Desktop/ImageIO/VipsLibrary.h"

#include <vips/vips.h>
// Needs the one above.
#include <vips/vector.h>

namespace quillmere {
namespace {

void dropMessage(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

bool startOnce() {
    // A picture's oddities (a wrong tag, a profile that is ignored) are nobody's console output.
    g_log_set_handler("VIPS",
                      static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE |
                                                  G_LOG_LEVEL_INFO | G_LOG_LEVEL_DEBUG),
                      dropMessage, nullptr);
    if (vips_init("quillmere") != 0) return false;
    vips_cache_set_max(0);
    // The vector path reduces in fixed point of few bits: fine patterns come back as faint rings
    // (5 of 255 levels), which an enlarger would sharpen. Without it that is 1 level.
    vips_vector_set_enabled(FALSE);
    return true;
}

struct ThreadData {
    ~ThreadData() { vips_thread_shutdown(); }
};

}  // namespace

bool startVips() {
    static const bool started = startOnce();
    if (!started) return false;
    thread_local const ThreadData data;
    return true;
}

void forgetVipsErrors() { vips_error_clear(); }

}  // namespace quillmere
