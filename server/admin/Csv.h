#pragma once

#include "dataset/QelError.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QCryptographicHash>
#include <QIODevice>

#include <vector>

/// Tables as text, RFC 4180 in UTF-8, row by row. NULL is nothing between two commas; an empty
/// text would be "", and every other text stands in quotes only where it must, so that a table has
/// one form.
namespace Qel::Admin {

/// Writes records and counts what it wrote. Throws EQelError if the device does not take it.
class CsvWriter
{
public:
    explicit CsvWriter(QIODevice &device);

    void Add(QByteArrayView text);
    void AddNull();
    void EndRecord();
    void Finish(); ///< everything is with the device

    QByteArray Sha256() const { return hash_.result().toHex(); } ///< lower-case hexadecimal

private:
    void Separate();
    void Flush();

    QIODevice &device_;
    QByteArray buffer_;
    QCryptographicHash hash_{QCryptographicHash::Sha256};
    bool inRecord_ = false;
};

struct CsvCell
{
    QByteArray text;
    bool isNull = false;
};

/// A record that is none: a quote out of place, or a cell beyond all measure.
class ECsvError : public EQelError
{
public:
    ECsvError(qint64 line, const QString &message)
        : EQelError(message)
        , line_(line)
    {
    }

    qint64 Line() const { return line_; }

private:
    qint64 line_;
};

/// Reads records, with lines ended by CR LF or LF alone. Holds one record at a time.
class CsvReader
{
public:
    explicit CsvReader(QIODevice &device);

    /// The next record; false: there is none. Throws ECsvError, after which nothing can be read.
    bool Next();

    const std::vector<CsvCell> &Cells() const { return cells_; }
    qint64 Line() const { return line_; } ///< on which the record begins, from 1

private:
    static constexpr int End = -1;

    int Peek();
    int Take();
    CsvCell ReadCell();
    void ReadQuoted(QByteArray &text);
    bool EndsRecord(); ///< takes the end of a record, or sees the comma before the next cell
    void Put(QByteArray &text, char c) const;

    QIODevice &device_;
    QByteArray buffer_;
    qsizetype at_ = 0;
    qint64 line_ = 0;
    qint64 nextLine_ = 1;
    std::vector<CsvCell> cells_;
};

} // namespace Qel::Admin
