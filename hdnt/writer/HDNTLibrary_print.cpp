#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/writer/HDNTPrintVisitor.h"
#include "hdnt/writer/HDNTSourceVisitor.h"

void HDNTLibrary::print() { print(stdout); }

void HDNTLibrary::print(FILE* stream) {
    HDNTPrintVisitor visitor(stream);
    visitor.gather();
    accept(visitor);
}

bool HDNTLibrary::printSource(FILE* stream, std::vector<std::string>* problems) const {
    HDNTSourceVisitor visitor(stream, problems);
    visitor.gather();
    acceptOwn(visitor);
    return visitor.isComplete();
}
