#pragma once

#include <QPointer>
#include <QScreen>
#include <QString>
#include <QWidget>

namespace Qel {

/// Who works at the screens, as the host hands it over. Empty until the host has called LibInit.
/// The fields stand in the order of the host's record; those without a name are its own and stay
/// empty here.
struct TRunParam
{
    QString UserId;   ///< posted as LOG_USER_ID or LAST_USER_ID
    QString UserCode; ///< login code
    QString UserName; ///< posted as LAST_USER, LOG_USER_NAME or CREATE_USER
    QString Reserved4;
    QString OrgId;
    QString OrgAbbr;
    QString OrgName;
    QString Reserved8;
    QString Reserved9;
    QString Reserved10;
    QString Reserved11;
    QString PinCode;
    QString Reserved13;
    QString Reserved14;
    QString Reserved15;
    qint32 Reserved16 = 0;
    QString CaType;
    QString Reserved18;
    qint32 Reserved19 = 0;

    bool operator==(const TRunParam &) const = default;
};

/// The server's address. Only the base address is filled; the rest is the host's record.
struct TServerURL
{
    QString BaseURL;
    QString Reserved2;
    qint32 Reserved3 = 0;
    QString Reserved4;
    QString Reserved5;
    QString Reserved6;
    qint32 Reserved7 = 0;
};

/// The two objects of the host in which screens live.
struct THostObjects
{
    QPointer<QWidget> Application; ///< owner of screens and message boxes; null: the library's own
    QPointer<QScreen> Screen;      ///< null: the primary screen
};

} // namespace Qel
