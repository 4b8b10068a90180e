#pragma once

#include "admin/SiteFiles.h"
#include "store/Connection.h"

#include <QString>

namespace Qel::Admin {

struct ImportOptions
{
    bool dryRun = false;  ///< checks everything and changes nothing
    bool edited = false;  ///< files may differ from what the manifest says of them
    int findings = 1'000; ///< so many are told at most
};

/// Something that keeps the files from being imported.
struct ImportFinding
{
    QString file;
    qint64 line = 0; ///< from 1; 0: of the whole file
    QString column;  ///< empty: of the whole line
    QString text;

    /// "BAS_ORG.csv:12: ORG_NAME: ..."
    QString Text() const;
};

struct ImportResult
{
    QList<ImportFinding> findings; ///< empty: everything is in
    bool more = false;             ///< the list was cut at the limit
    qint64 rows = 0;               ///< that were read
};

/// Reads a site from its files into tables without rows, in one transaction: all of it, or nothing
/// if there is a single finding. Holds one row at a time. Throws EQelError for a folder that is no
/// export of this version and for tables that have rows, EStoreError.
ImportResult ImportSite(Store::Connection &connection, const QString &path,
                        const ImportOptions &options);

} // namespace Qel::Admin
