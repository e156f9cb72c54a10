// A producer without most of its entry points.
extern "C" __attribute__((visibility("default"))) int GCInitLib() {
    return 0;
}
