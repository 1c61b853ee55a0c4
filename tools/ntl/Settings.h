#pragma once

#include <string>
#include <vector>

namespace ntl {

/// Everything the command line can say. Each option of the tables in Options.cpp has its place here.
struct Settings {
    std::string data;
    std::vector<std::string> cellTables;
    std::vector<std::string> parameters;
    std::string architecture;
    std::vector<std::string> limits;
    std::string color = "auto";
    std::string generate; ///< hidden: what to make of the option tables

    std::vector<std::string> inputs;
    std::vector<std::string> searchDirectories;
    int jobs = 1;
    int mostErrors = 20; ///< 0: all
    std::string format = "text";
    std::string depfile;
    std::string depTarget;                      ///< empty: the dependency file itself
    std::vector<std::string> warningsAreErrors; ///< lists of codes; "true": all
    std::vector<std::string> onlyRules;
    std::vector<std::string> rulesOff;
    std::vector<std::string> severities; ///< CODE=SEVERITY
    std::string baseline;
    std::string newBaseline; ///< to be written
    bool untrusted = false;
    std::string rootFolder;
    int budget = -1; ///< expansions of one mapping; -1: not said
    bool noProject = false;
    bool quiet = false;
    bool isThorough = false; ///< mappings are tried, too
    bool listRules = false;

    std::string parent;  ///< empty: none; "common"; or a path
    std::string library; ///< empty: the common library
    std::string group;
    std::string prefix;
    bool json = false;
    std::vector<std::string> blocks;

    std::vector<std::string> propertyValues; ///< NAME=VALUE
    std::vector<std::string> connectedPins;
    bool deep = false;
    bool allBlocks = false;
    bool withMissing = false; ///< whether each block has to have a model
    std::string expansionFormat = "ntl";

    std::vector<std::string> files; ///< "-": standard input
    bool checkOnly = false;
    bool inPlace = false;
    bool fixLineEnds = false;
    bool source = false;

    std::string oldLibrary;
    std::string newLibrary;
    std::vector<std::string> oldSearchDirectories;
    std::vector<std::string> newSearchDirectories;
    std::string failOn = "any"; ///< the least effect that counts for the status

    std::string guideFolder;
    std::string title;
    std::vector<std::string> architectures;

    std::string form;        ///< of what is exported or imported
    std::string outputFile;  ///< empty: standard output
    std::string splitFolder; ///< empty: one text

    std::vector<std::string> codes; ///< of rules and messages

    bool overStandardStreams = false; ///< where a server speaks always

    std::string topic; ///< what help is wanted of; empty: the tool
};

} // namespace ntl
