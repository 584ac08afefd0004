// What the sanitizers are told by the test programs themselves, however they are started.

#ifdef __SANITIZE_ADDRESS__

extern "C" const char* __asan_default_options();
extern "C" const char* __lsan_default_options();

// Bad input may ask for any amount of memory: the library has to see the null that malloc returns
// outside the sanitizer.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1:detect_leaks=1";
}

extern "C" const char* __lsan_default_options() {
    return "suppressions=" KELVOFXDS_SOURCE_DIR "/tests/lsan.supp:print_suppressions=0";
}

#endif
