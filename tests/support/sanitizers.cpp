// What the sanitizers are told by the test programs themselves, however they are started.

#ifdef __SANITIZE_ADDRESS__

extern "C" const char* __lsan_default_options();

extern "C" const char* __lsan_default_options() {
    return "suppressions=" KELVOFXDS_SOURCE_DIR "/tests/lsan.supp:print_suppressions=0";
}

#endif
