// What is measured through the library's interface.
#include "bench/Subject.h"

namespace bench {

std::vector<Subject> allSubjects() {
    std::vector<Subject> subjects;
    addScanSubjects(subjects);
    addLoadSubjects(subjects);
    addPeerSubjects(subjects);
    addLookUpSubjects(subjects);
    addNetlistSubjects(subjects);
    addWriteSubjects(subjects);
    addSyntaxSubjects(subjects);
    addLintSubjects(subjects);
    addCompareSubjects(subjects);
    addPageSubjects(subjects);
    return subjects;
}

} // namespace bench
