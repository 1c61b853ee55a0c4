// A part of a host that uses the library, to be opened and closed with it.
#include "hdnt/hdnt.h"

extern "C" __attribute__((visibility("default"))) int numBlocks(const char* path) {
    const hdnt::Loaded loaded = hdnt::load(path);
    return loaded ? static_cast<int>(loaded.library->getNumTypeBlocks(false)) : -1;
}
