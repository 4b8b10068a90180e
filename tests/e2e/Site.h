#pragma once

#include "host/MainWindow.h"
#include "host/Plugin.h"

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

private:
    QTemporaryDir folder_;
    QString token_;
    quint16 port_ = 0;
    std::unique_ptr<QProcess> server_;
    std::unique_ptr<Host::MainWindow> window_;
};

} // namespace Qel::Test
