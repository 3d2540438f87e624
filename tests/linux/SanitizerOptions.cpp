// GLib leaves the first table of its interned strings behind when it makes a larger one. The table
// is known by the loader, whose file (a machine without symbols knows no more) runs the function
// that allocates it; only a whole backtrace shows that.
extern "C" const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}
extern "C" const char* __lsan_default_suppressions() {
    return "leak:ld-linux\n";
}
