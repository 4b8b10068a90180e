#pragma once

#include "host/Plugin.h"

#include <QHash>
#include <QList>
#include <QMainWindow>

class QAction;
class QLabel;
class QMenu;
class QTabWidget;

namespace Qel::Host {

/// The host's window, and the application object that the plug-in gets: its menu comes from the
/// form list, its screens are tabs. `plugin` has to live as long as the window.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(const Plugin &plugin);
    ~MainWindow() override;

    /// `server` is shown as it is: without a credential.
    void ShowSession(const QString &userName, const QString &userCode, const QString &server);

    /// Opens a screen by its code in a tab of its own, or tells why not; null then.
    QWidget *OpenScreen(const QString &code);
    QTabWidget *Tabs() const { return tabs_; }
    const QList<FormInfo> &Forms() const { return forms_; }

    /// The host's error handling, called by the plug-in: a message and, after an empty line,
    /// details. The screen stays usable.
    Q_INVOKABLE void HandleException(const QString &text);

signals:
    void ErrorTold(const QString &text);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void MakeMenus();
    QAction *AddEntry(QMenu *menu, const FormInfo &form);
    void CloseTab(int index);
    void CloseCurrentTab();
    bool CloseScreens();
    void ShowAbout();

    const Plugin &plugin_;
    QList<FormInfo> forms_;
    QList<QAction *> entries_;
    QTabWidget *tabs_;
    QLabel *user_;
    QLabel *server_;
};

} // namespace Qel::Host
