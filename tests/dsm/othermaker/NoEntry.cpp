// A shared object that is no data source.
extern "C" __attribute__((visibility("default"))) int makersOtherFunction() {
    return 1;
}
