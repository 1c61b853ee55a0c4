#pragma once

#include "author/exchange/BlockJson.h"
#include "author/guide/Book.internal.h"

#include <string>

// What each page shows, as its template wants it. Keys that are not there would be sought in what is around, so each is
// set, if to null.
namespace hdnt::author::guide {

/// What goes from the page of one block to that of the next.
struct Progression {
    std::size_t drawn = 0;
    std::string undrawn; ///< why a mapping was not drawn
    SourcePlaces places;
};

/// Of template "block". `facts` is what jsonOf(HDNTBlock&, ...) says, `sources` what SourceTexts::of() does.
Json blockPage(const Book& book, HDNTBlock& block, const Json& facts, const Json& sources, Progression& progression);
/// The part of it about mappings.
Json mappingOf(const Book& book, HDNTBlock& block, const Json& sources, Progression& progression);

/// A drawing of all mappings; empty when there is none, or too much, or nothing to draw it with.
std::string mappingGraphOf(const Book& book);

/// A row of the table of all blocks.
Json blockRow(const Book& book, const HDNTBlock& block, const Json& facts);

// Of the templates of their names.
Json startPage(const Book& book, const Json& rows);
Json namesPage(const Json& names);
Json matrixPage(const Book& book, const Json& rows);
Json mappingsPage(const Book& book);
Json functionsPage(const Book& book);
Json findingsPage(const Book& book);
Json changesPage(const Book& book);

/// Changes of one block, or of all, in words.
Json changesOf(const Book& book, const std::string& block);

} // namespace hdnt::author::guide
