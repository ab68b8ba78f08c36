// The run lets go of packages without closing them, which ends with the process. Everything else that leaks
// is a fault.
extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
    return "leak:zan_pkg_open_file\nleak:libelf\n";
}
