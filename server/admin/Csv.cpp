#include "admin/Csv.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

constexpr qsizetype BufferBytes = 1 << 18;
constexpr qsizetype MaxCellBytes = 16 << 20;

bool NeedsQuotes(QByteArrayView text)
{
    return text.isEmpty() || std::any_of(text.begin(), text.end(), [](char c) {
               return c == '"' || c == ',' || c == '\r' || c == '\n';
           });
}

} // namespace

CsvWriter::CsvWriter(QIODevice &device)
    : device_(device)
{
}

void CsvWriter::Add(QByteArrayView text)
{
    Separate();
    if (!NeedsQuotes(text)) {
        buffer_.append(text);
        return;
    }
    buffer_ += '"';
    for (const char c : text) {
        buffer_ += c;
        if (c == '"')
            buffer_ += c;
    }
    buffer_ += '"';
}

void CsvWriter::AddNull()
{
    Separate();
}

void CsvWriter::EndRecord()
{
    buffer_ += "\r\n";
    inRecord_ = false;
    if (buffer_.size() >= BufferBytes)
        Flush();
}

void CsvWriter::Finish()
{
    Flush();
}

void CsvWriter::Separate()
{
    if (inRecord_)
        buffer_ += ',';
    inRecord_ = true;
}

void CsvWriter::Flush()
{
    hash_.addData(buffer_);
    if (device_.write(buffer_) != buffer_.size())
        throw EQelError(u"写文件失败：%1"_s.arg(device_.errorString()));
    buffer_.clear();
}

CsvReader::CsvReader(QIODevice &device)
    : device_(device)
{
}

bool CsvReader::Next()
{
    cells_.clear();
    line_ = nextLine_;
    if (Peek() == End)
        return false;
    do
        cells_.push_back(ReadCell());
    while (!EndsRecord());
    return true;
}

int CsvReader::Peek()
{
    if (at_ == buffer_.size()) {
        buffer_ = device_.read(BufferBytes);
        at_ = 0;
    }
    return buffer_.isEmpty() ? End : static_cast<unsigned char>(buffer_[at_]);
}

int CsvReader::Take()
{
    const int c = Peek();
    if (c != End)
        ++at_;
    if (c == '\n')
        ++nextLine_;
    return c;
}

CsvCell CsvReader::ReadCell()
{
    CsvCell cell;
    if (Peek() == '"') {
        ReadQuoted(cell.text);
        return cell;
    }
    for (int c = Peek(); c != End && c != ',' && c != '\r' && c != '\n'; c = Peek()) {
        if (c == '"')
            throw ECsvError(nextLine_, u"引号只能在单元的开头和结尾"_s);
        Put(cell.text, static_cast<char>(Take()));
    }
    cell.isNull = cell.text.isEmpty();
    return cell;
}

void CsvReader::ReadQuoted(QByteArray &text)
{
    Take();
    for (;;) {
        const int c = Take();
        if (c == End)
            throw ECsvError(line_, u"引号没有结束"_s);
        if (c == '"') {
            if (Peek() != '"')
                return;
            Take();
        }
        Put(text, static_cast<char>(c));
    }
}

bool CsvReader::EndsRecord()
{
    const int c = Take();
    if (c == ',')
        return false;
    if (c == '\r' && Peek() == '\n')
        Take();
    else if (c != '\n' && c != End)
        throw ECsvError(line_, u"单元之后应是逗号或行尾"_s);
    return true;
}

void CsvReader::Put(QByteArray &text, char c) const
{
    if (text.size() >= MaxCellBytes)
        throw ECsvError(line_, u"单元过长"_s);
    text += c;
}

} // namespace Qel::Admin
