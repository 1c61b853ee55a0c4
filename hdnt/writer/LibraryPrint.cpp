// The entries of the writer.
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/writer/HDNTPrintVisitor.h"
#include "hdnt/writer/HDNTSourceVisitor.h"
#include "hdnt/writer/Line.h"
#include "hdnt/writer/PropertyText.h"

void HDNTLibrary::print() { print(stdout); }

void HDNTLibrary::print(FILE* stream) {
    HDNTPrintVisitor visitor(stream);
    visitor.gatherBodies();
    accept(visitor);
}

bool HDNTLibrary::printSource(FILE* stream, std::vector<std::string>* problems) {
    HDNTSourceVisitor visitor(stream, problems);
    visitor.gatherBodies();
    acceptOwn(visitor);
    return visitor.isComplete();
}

void HDNTProperty::print() { print(4); }
void HDNTProperty::print(unsigned long indent) { print(indent, stdout); }

void HDNTProperty::print(unsigned long indent, FILE* stream) {
    hdnt::writer::Line line;
    line.indent(static_cast<long>(indent));
    hdnt::writer::appendPrinted(line, *this);
    line.add('\n');
    std::fwrite(line.view().data(), 1, line.view().size(), stream);
}
