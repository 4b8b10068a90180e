#pragma once

#include "store/Database.h"

#include <QCommandLineOption>
#include <QString>

#include <memory>

class QCommandLineParser;

/// Which database a command works on: --database, or else the environment variable QEL_DATABASE,
/// which is where a password may stand.
namespace Qel::Admin {

QCommandLineOption DatabaseOption();

/// The address; empty if neither is given. Throws EQelError for a password in the option: everyone
/// on the machine can read the command line.
QString DatabaseUrl(const QCommandLineParser &parser);

/// Whether the address carries a password, as user info or as a parameter.
bool HasPassword(const QString &url);

/// The same where there must be one: throws EQelError if there is none.
QString NamedDatabaseUrl(const QCommandLineParser &parser);

/// Opens it. Throws EQelError if none is named, EStoreError if it cannot be opened.
std::unique_ptr<Store::Database> OpenDatabase(const QCommandLineParser &parser);

/// The value of an option that is a whole number. Throws EQelError for anything else.
int NumberOption(const QCommandLineParser &parser, const QString &option, int least, int most);

} // namespace Qel::Admin
