// What the sanitizers should not hold against us. Only libraries' own doings belong here.

// - libx265 keeps a few kilobytes of tables when its last encoder closes;
// - libdav1d loses a picture header when it meets a damaged AVIF;
// - the C library frees what a thread last asked of dlerror at the thread's end, which the threads
//   of libraries may not reach before the end of the process.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libx265\nleak:libdav1d\nleak:_dlerror_run\n";
}

// GLib's locks are built on futexes, and FFmpeg's counts on the processor's own atomics, which the
// thread sanitizer can't see in a library that was not compiled with it; so all that these
// libraries hand from thread to thread looks like a race. What libheif hands over in the standard
// library's strings is only told by the function of ours that it works for.
extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
    return "race:libglib-2.0.so\nrace:libgobject-2.0.so\nrace:libvips.so\nrace:vips-heif.so\n"
           "race:vips-jxl.so\nrace:libheif.so\nrace:libx265.so\nrace:libde265.so\nrace:libjpeg.so\n"
           "race:libpng16.so\nrace:libz.so\nrace:libnuma.so\nrace:heicRepresentation\n"
           "race:libavcodec.so\nrace:libavformat.so\nrace:libavutil.so\nrace:libswscale.so\n"
           "race:libx264.so\n";
}
