#pragma once

#include "admin/SiteFiles.h"
#include "store/Connection.h"

namespace Qel::Admin {

/// Writes the site into the folder, which is made and must be empty: one state of the database,
/// however long it takes and whatever is posted meanwhile. Rows come in the order of their keys,
/// values in one form, so that the same data makes the same bytes on every database. Holds one
/// row at a time. Throws EQelError, EStoreError; what was written by then stays, without a
/// manifest.
Manifest ExportSite(Store::Connection &connection, const QString &path, bool withServerTables);

} // namespace Qel::Admin
