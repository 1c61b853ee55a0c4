// What the machine takes for memory that is new to a process, which is part of every first load.
#include "bench/Subject.h"

#include <sys/mman.h>

#include <memory>

namespace bench {

namespace {

constexpr size_t pageBytes = 4096;
constexpr size_t hugePageBytes = size_t{2} << 20;
constexpr size_t pages = 16384;

/// Anonymous memory; `run` writes to each page of it once.
class FreshMemory {
public:
    explicit FreshMemory(int advice) : advice_(advice) {}

    void map() {
        mapping_ = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapping_ == MAP_FAILED) fail("no memory");
        const size_t over = reinterpret_cast<size_t>(mapping_) % hugePageBytes;
        first_ = static_cast<volatile char*>(mapping_) + (hugePageBytes - over);
        madvise(mapping_, bytes, advice_); // a system without huge pages gives small ones
    }
    void touch() {
        for (size_t page = 0; page < pages; ++page) first_[page * pageBytes] = 1;
    }
    void unmap() { munmap(mapping_, bytes); }

private:
    static constexpr size_t bytes = pages * pageBytes + hugePageBytes;

    int advice_;
    void* mapping_ = nullptr;
    volatile char* first_ = nullptr;
};

Work freshPages(int advice) {
    auto memory = std::make_shared<FreshMemory>(advice);
    return {.prepare = [=] { memory->map(); },
            .run = [=] { memory->touch(); },
            .drop = [=] { memory->unmap(); },
            .items = pages};
}

} // namespace

void addPageSubjects(std::vector<Subject>& subjects) {
    subjects.push_back({"fresh_pages", Subject::Sizes::One, [](const Corpus&) { return freshPages(MADV_NOHUGEPAGE); }});
    subjects.push_back(
        {"fresh_pages-huge", Subject::Sizes::One, [](const Corpus&) { return freshPages(MADV_HUGEPAGE); }});
}

} // namespace bench
