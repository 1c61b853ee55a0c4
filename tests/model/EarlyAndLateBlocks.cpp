// Blocks that are made before main() and after the library's own initialisers are undone. Exit status 0 when both work.
#include "hdnt/hdnt.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <type_traits>

static_assert(std::is_same_v<decltype(HDNTBlock::s_unregisteredNames), std::vector<std::string>>);

static const HDNTBlock early("MADE_EARLY", nullptr, nullptr, nullptr);

static bool holds(bool condition, const char* what) {
    if (!condition) std::fprintf(stderr, "%s\n", what);
    return condition;
}

static void makeLate(int, void*) {
    const HDNTBlock late("MADE_LATE", nullptr, nullptr, nullptr);
    if (!holds(late.getType() == 65535, "the late block has another type")) _exit(1);
}

// Called before any library is initialised; so what it registers is called when all are undone. Not with atexit(),
// which belongs to the program and is called with it.
static void registerLate() { on_exit(makeLate, nullptr); }
[[gnu::section(".preinit_array"), gnu::used]] static void (*const registered)() = registerLate;

int main() {
    const bool good =
        holds(early.getType() == 4001, "the early block has another type") &&
        holds(HDNTBlock::s_unregisteredNames == std::vector<std::string>{"MADE_EARLY"}, "other names were noted");
    return good ? 0 : 1;
}
