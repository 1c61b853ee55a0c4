#pragma once

#include "hdnt/platform/Export.h"

#include <cstddef>
#include <string>

/// Bounds that keep a load of unknown files within reason. Every default is far above what a real library holds.
///
/// A bound met while a file is opened shows as the failure of that opening; one met in the text is one report at the
/// declaration, which names the bound and the value.
struct HDNT_API HDNTLimits {
    int includeDepth = 256;                   ///< INCLUDE and INLINE files open at once
    size_t inputBytes = size_t{1} << 30;      ///< bytes of one input after decompression
    unsigned expansionRatio = 200;            ///< decompressed bytes per stored byte ...
    size_t expansionFloor = size_t{64} << 20; ///< ... once more than this many bytes came out
    long rangeElements = 1048576;             ///< elements of one ranged name
    int bitWidth = 65536;                     ///< bits of a hex or binary property
    int precision = 100;                      ///< fraction digits of a double property
    int parserDepth = 4000;                   ///< entries of the parser's stack; at least 200 are always there
    long expansionInstances = 1000000;        ///< instances that one expanded mapping may have
    size_t diagnostics = 1000000;             ///< that hdnt::load keeps; of the rest one says how many they are
    std::string rootFolder;                   ///< INCLUDE, INLINE and map libraries stay below it; empty: anywhere
    size_t includedBytes = size_t{1} << 34;   ///< bytes of all INCLUDE and INLINE files of one file together
    int seconds = 0;            ///< after which no INCLUDE or INLINE file of a file is opened; 0: any number
    bool ownFolderOnly = false; ///< INCLUDE and INLINE name files below the folder of the file, and no absolute names

    /// Those for files that someone else has written: ownFolderOnly, no more than 64 MiB of text and as much included,
    /// 10 seconds, and 100,000 instances. docs/limits.md says what a load may cost then.
    static HDNTLimits forUntrusted();

    /// The limits in force in this thread: those of the innermost Scope, else those of the process. Read at the start
    /// of each parse; the reference lives as long as the scope or the process.
    static const HDNTLimits& get();
    /// Replaces those of the process for every later parse. Not to be called during a load.
    static void set(const HDNTLimits& limits);

    /// Lays limits, which are borrowed, over those of the process for as long as the object lives, in this thread.
    class HDNT_API Scope {
    public:
        explicit Scope(const HDNTLimits& limits);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        const HDNTLimits* outer_;
    };
};
