// The code of the test bundles: loaded through the bundle calls, it exports one function.
extern "C" __attribute__((visibility("default"))) int SpindeckBundleAnswer(int inQuestion)
{
    return inQuestion * 2 + 1;
}
