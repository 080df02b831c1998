// Loaded before a program (LD_PRELOAD), it makes every attempt to set a place in a file fail, which
// no file by itself does.
#include <cstdio>

extern "C" [[gnu::visibility("default")]] int fsetpos(std::FILE*, const std::fpos_t*) { return -1; }
