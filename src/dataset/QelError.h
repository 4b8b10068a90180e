#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace Qel {

/// The root of every error that this system raises. The text is for the operator: it says what
/// failed and where, in Chinese; what() gives the same text in UTF-8.
class EQelError : public std::exception
{
public:
    explicit EQelError(const QString &message)
        : message_(message)
        , utf8_(message.toUtf8())
    {
    }

    const QString &Message() const noexcept { return message_; }

    /// What a person who has to find the cause needs beside the message: several lines, to be
    /// copied. Empty when the message says it all.
    virtual QString Details() const { return {}; }

    const char *what() const noexcept override { return utf8_.constData(); }

private:
    QString message_;
    QByteArray utf8_;
};

/// A dataset was used against its rules (unknown field, not open, not in edit state), or bytes
/// that should be rows are not.
class EDataSetError : public EQelError
{
public:
    using EQelError::EQelError;
};

} // namespace Qel
