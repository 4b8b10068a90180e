#pragma once

#include "host/MainWindow.h"
#include "host/Plugin.h"
#include "support/TestPostgres.h"
#include "wire/Wire.h"

#include <QProcess>
#include <QTemporaryDir>

#include <memory>

namespace Qel::Test {

/// As SQL text, a time later than what the sample data has in its log: what is later yet, the story
/// did.
QString BeforeTheStory();

/// A whole site on one machine: a real server process on the sample database, in a file or, if this
/// run of the program is so, on PostgreSQL; the plug-in as the host loads it, and the host's main
/// window.
class Site
{
public:
    Site();
    ~Site();

    void StartServer();  ///< the first time on a free port, again on the same one
    void KillServer();   ///< as a power cut would
    void FreezeServer(); ///< takes requests and does nothing with them

    Host::MainWindow &Window() { return *window_; }
    /// Opens a screen and waits until it is ready.
    QWidget *OpenScreen(const QString &code);

    /// Every row that the database gives now, NULL as an empty text. Several columns are joined by
    /// "/", with NULL as "-". The text is one that both databases understand.
    QStringList Select(const QString &sql) const;
    /// What another program of the site does to the database meanwhile.
    void Change(const QString &sql) const;
    /// What another operator posts meanwhile from a client of their own: the first code.
    QString PostAsColleague(const QString &manager, const QString &method,
                            const Wire::NamedValues &row);
    QString Colleague() const; ///< that operator's USER_NAME

private:
    QStringList DatabaseArguments() const;
    void SignColleagueIn();

    QTemporaryDir folder_;
    std::unique_ptr<TestPostgres> postgres_; ///< null on SQLite
    QString url_;
    QString token_;
    quint16 port_ = 0;
    QString colleagueCode_; ///< empty until they are needed
    std::unique_ptr<QProcess> server_;
    std::unique_ptr<Host::MainWindow> window_;
};

} // namespace Qel::Test
