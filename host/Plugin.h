#pragma once

#include "QelLibAdmin.h"

#include <QLibrary>
#include <QList>
#include <QString>
#include <QUrl>

namespace Qel::Host {

/// One screen that the plug-in offers.
struct FormInfo
{
    QString code;
    QString name; ///< "menu－title" with a full-width hyphen; by it the screen is opened
    bool beginGroup = false;

    QString Menu() const;  ///< what stands before the hyphen
    QString Title() const; ///< what stands behind it, or the whole name
};

/// Reads the plug-in's form list. Raises EQelError if it is none.
QList<FormInfo> ParseFormList(const QByteArray &xml);

/// The loaded plug-in library. Stays loaded until the process ends.
class Plugin
{
public:
    /// The environment variable QEL_PLUGIN, or the module beside the host, in the build tree or
    /// where it is installed. Empty if it is nowhere.
    static QString Find();

    /// Raises EQelError that names the file and the reason: not there, not loadable, one of the
    /// three functions missing.
    explicit Plugin(const QString &file);

    /// Hands over the main window, the server with the credential, and who works here.
    void Init(QWidget *application, const QUrl &server, const QByteArray &runParams) const;
    QList<FormInfo> Forms() const;
    /// A new hidden screen. Raises EQelError for a name that the plug-in does not know, and what
    /// goes wrong while it is made.
    QWidget *OpenForm(const QString &name) const;

private:
    template <typename Function>
    Function Resolve(const char *symbol);

    QLibrary library_;
    TLibInit init_;
    TLibGetFormInfo getFormInfo_;
    TLibOpenForm openForm_;
};

} // namespace Qel::Host
