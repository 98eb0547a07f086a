#include "Desktop/ImageIO/VipsLibrary.h"

#include <mutex>
#include <string>

#include <gmodule.h>
#include <vips/vips.h>
// Needs the one above.
#include <vips/vector.h>

namespace quillmere {
namespace {

void dropMessage(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

// By itself the library loads all its modules, decoders of documents and of a hundred old formats
// among them, for 15 ms at every start. It looks for them below this folder if one is named.
bool startWithoutModules() {
    constexpr const char* variable = "VIPSHOME";
    g_setenv(variable, "/nonexistent", TRUE);
    const bool started = vips_init("quillmere") == 0;
    g_unsetenv(variable);
    return started;
}

void openModule(const char* name) {
    const std::string file = QUILLMERE_VIPS_LIBRARY_FOLDER "/vips-modules-" +
                             std::to_string(vips_version(0)) + "." +
                             std::to_string(vips_version(1)) + "/vips-" + name + ".so";
    g_module_open(file.c_str(), G_MODULE_BIND_LAZY);  // never closed: it registers types
}

bool startOnce() {
    // A picture's oddities (a wrong tag, a profile that is ignored) are nobody's console output.
    g_log_set_handler("VIPS",
                      static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE |
                                                  G_LOG_LEVEL_INFO | G_LOG_LEVEL_DEBUG),
                      dropMessage, nullptr);
    if (!startWithoutModules()) return false;
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

void loadVipsModule(VipsModule module) {
    static std::once_flag heif, jxl;
    switch (module) {
        case VipsModule::heif:
            return std::call_once(heif, openModule, "heif");
        case VipsModule::jxl:
            return std::call_once(jxl, openModule, "jxl");
    }
}

void forgetVipsErrors() { vips_error_clear(); }

}  // namespace quillmere
