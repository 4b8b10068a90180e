#pragma once

#include "host/MainWindow.h"
#include "host/Plugin.h"
#include "wire/Wire.h"

#include <QProcess>
#include <QTemporaryDir>

#include <memory>

namespace Qel::Test {

/// A whole site on one machine: a real server process on the sample database in a file, the
/// plug-in as the host loads it, and the host's main window.
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

    /// The first column of every row that the database file gives now, NULL as an empty text.
    QStringList Select(const QString &sql) const;
    /// What another program of the site does to the database meanwhile.
    void Change(const QString &sql) const;
    /// What another operator posts meanwhile from a client of their own: the first code.
    QString PostAsColleague(const QString &manager, const QString &method,
                            const Wire::NamedValues &row);
    QString Colleague() const; ///< that operator's USER_NAME

private:
    QStringList Run(const QString &sql, int mode) const;
    QStringList DatabaseArguments() const;
    void SignColleagueIn();

    QTemporaryDir folder_;
    QString token_;
    quint16 port_ = 0;
    QString colleagueCode_; ///< empty until they are needed
    std::unique_ptr<QProcess> server_;
    std::unique_ptr<Host::MainWindow> window_;
};

} // namespace Qel::Test
