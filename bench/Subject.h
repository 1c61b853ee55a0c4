#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

/// What is measured: `prepare`, `run`, `drop` are called in turn, any number of times, and only `run` is timed. The
/// first and the last may be empty.
struct Work {
    std::function<void()> prepare = {};
    std::function<void()> run = {};
    std::function<void()> drop = {};
    size_t items = 0; ///< done in one run, such as look-ups; 0 when bytes are what counts
};

/// The generated texts of one size, in megabytes of NTL text.
class Corpus {
public:
    explicit Corpus(int megabytes) : megabytes_(megabytes) {}

    /// The file of a form: "btl", "lines.btl", "one-line.btl", "json" or "cfg"; or the folder "described", whose
    /// description configuration has an entry for every property, or "parts", the NTL text in a thousand files.
    std::string path(const std::string& form) const;
    bool exists() const;
    std::string text(const std::string& form) const;
    /// Of the NTL text, whatever is read instead: what throughput and memory are held against.
    size_t bytes() const;

private:
    int megabytes_;
};

struct Subject {
    enum class Sizes { UpToThousand, All, UpToTen, Ten, One };

    std::string name;
    Sizes sizes = Sizes::All;
    /// Called in the process that measures it, once.
    std::function<Work(const Corpus&)> make;
};

/// Those of the program.
std::vector<Subject> allSubjects();
/// Each appends its subjects. A name with a hyphen is a variant or a peer of the name in front of it.
void addScanSubjects(std::vector<Subject>& subjects);
void addLoadSubjects(std::vector<Subject>& subjects);
void addPeerSubjects(std::vector<Subject>& subjects);
void addLookUpSubjects(std::vector<Subject>& subjects);
void addNetlistSubjects(std::vector<Subject>& subjects);
void addWriteSubjects(std::vector<Subject>& subjects);
void addSyntaxSubjects(std::vector<Subject>& subjects);
void addLintSubjects(std::vector<Subject>& subjects);
void addCompareSubjects(std::vector<Subject>& subjects);
void addPageSubjects(std::vector<Subject>& subjects);

/// The whole file as a peer of the library reads it, in one piece.
std::string readFile(const std::string& path);
/// Ends the program: a subject that fails has no figure.
[[noreturn]] void fail(const std::string& reason);

} // namespace bench
