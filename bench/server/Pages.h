#pragma once

#include <QString>

struct sqlite3;

namespace Qel::Bench {

class HttpLine;

/// A page of a list, with its total.
struct PageCase
{
    const char *name;
    int pageSize;
    QString sql; ///< as a screen sends it
    double goal; ///< of the ratio
    int rounds;  ///< fewer where a round takes tenths of a second
};

/// The heads of the columns of MeasurePage.
void PrintPageHeads();

/// The page from the server, held against its two statements in the SQLite library on the same file
/// and an empty trip; medians of rounds in turn. Prints a line; false if the goal is missed.
bool MeasurePage(const PageCase &test, sqlite3 *database, HttpLine &line);

/// How SQLite goes about the page and its total.
void PrintPlans(const PageCase &test, sqlite3 *database);

/// Opens the file for reading as the server does. Ends the program if it cannot.
sqlite3 *OpenPeer(const QString &file);

} // namespace Qel::Bench
