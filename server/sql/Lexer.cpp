#include "sql/Lexer.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Qel::Sql {

namespace {

constexpr std::array<std::string_view, 18> symbols = {
    "<>", "!=", "^=", "<=", ">=", "||", "(", ")", ",", ".", "*", "+", "-", "/", "=", "<", ">", ";"};

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}
bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Bytes from 0x80 belong to characters of other scripts, which may stand in names.
bool StartsWord(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool ContinuesWord(char c)
{
    return StartsWord(c) || IsDigit(c) || c == '$' || c == '#';
}

class Lexer
{
public:
    Lexer(std::string_view text, const Limits &limits)
        : text_(text)
        , limits_(limits)
    {
    }

    std::vector<Token> Run()
    {
        std::vector<Token> tokens;
        do {
            tokens.push_back(Next());
        } while (tokens.back().kind != TokenKind::End);
        return tokens;
    }

private:
    char Peek(size_t ahead = 0) const
    {
        return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0';
    }

    [[noreturn]] void Fail(qsizetype position, const QString &message) const
    {
        throw ESqlError("sql.syntax", position, message);
    }

    Token Next()
    {
        while (at_ < text_.size() && IsBlank(text_[at_]))
            ++at_;
        Token token;
        token.begin = static_cast<qsizetype>(at_);
        if (at_ < text_.size())
            Read(token);
        token.end = static_cast<qsizetype>(at_);
        return token;
    }

    void Read(Token &token)
    {
        const char c = Peek();
        if (StartsWord(c)) {
            const size_t begin = at_;
            while (ContinuesWord(Peek()))
                ++at_;
            token.kind = TokenKind::Word;
            token.text = UpperAscii(text_.substr(begin, at_ - begin));
        } else if (c == '\'') {
            token.kind = TokenKind::Text;
            token.text = ReadQuoted('\'', token.begin);
            CountLiteral(token.begin);
            CheckLength(token);
        } else if (c == '"') {
            token.kind = TokenKind::QuotedWord;
            token.text = ReadQuoted('"', token.begin);
            if (token.text.empty())
                Fail(token.begin, u"双引号内没有名称"_s);
        } else if (IsDigit(c) || (c == '.' && IsDigit(Peek(1)))) {
            token.kind = TokenKind::Number;
            token.text = ReadNumber(token.begin);
            CountLiteral(token.begin);
        } else {
            ReadSymbol(token);
        }
    }

    std::string ReadQuoted(char quote, qsizetype begin)
    {
        std::string value;
        for (++at_; at_ < text_.size(); ++at_) {
            if (text_[at_] == quote) {
                if (Peek(1) != quote) {
                    ++at_;
                    return value;
                }
                ++at_;
            }
            value += text_[at_];
        }
        Fail(begin, quote == '\'' ? u"字符串没有结束的单引号"_s : u"名称没有结束的双引号"_s);
    }

    std::string ReadNumber(qsizetype begin)
    {
        const size_t start = at_;
        while (IsDigit(Peek()))
            ++at_;
        if (Peek() == '.') {
            ++at_;
            while (IsDigit(Peek()))
                ++at_;
        }
        const size_t signLength = Peek(1) == '+' || Peek(1) == '-' ? 1 : 0;
        if ((Peek() == 'e' || Peek() == 'E') && IsDigit(Peek(1 + signLength))) {
            at_ += 1 + signLength;
            while (IsDigit(Peek()))
                ++at_;
        }
        if (ContinuesWord(Peek()))
            Fail(begin, u"数字后紧跟着其他字符"_s);
        std::string number(text_.substr(start, at_ - start));
        if (number.size() > 60)
            Fail(begin, u"数字过长"_s);
        if (number.front() == '.')
            number.insert(number.begin(), '0');
        return number;
    }

    void ReadSymbol(Token &token)
    {
        const std::string_view rest = text_.substr(at_);
        if (rest.starts_with("--") || rest.starts_with("/*"))
            Fail(token.begin, u"语句中不允许注释"_s);
        const auto symbol = std::find_if(symbols.begin(), symbols.end(),
                                         [&](std::string_view s) { return rest.starts_with(s); });
        if (symbol == symbols.end()) {
            Fail(token.begin, u"不认识的字符“%1”"_s.arg(QString::fromLatin1(rest.data(), 1)));
        }
        token.kind = TokenKind::Symbol;
        token.text = *symbol;
        at_ += symbol->size();
    }

    void CheckLength(const Token &literal) const
    {
        if (literal.text.size() > static_cast<size_t>(limits_.maxLiteralBytes)) {
            throw ESqlError("sql.limit", literal.begin,
                            u"一个常量超过 %1 字节"_s.arg(limits_.maxLiteralBytes));
        }
    }

    void CountLiteral(qsizetype position)
    {
        if (++literals_ > limits_.maxLiterals) {
            throw ESqlError("sql.limit", position, u"常量超过 %1 个"_s.arg(limits_.maxLiterals));
        }
    }

    std::string_view text_;
    const Limits &limits_;
    size_t at_ = 0;
    int literals_ = 0;
};

} // namespace

std::string UpperAscii(std::string_view text)
{
    std::string upper(text);
    for (char &c : upper) {
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    }
    return upper;
}

std::vector<Token> Tokenize(QByteArrayView text, const Limits &limits)
{
    if (text.size() > limits.maxTextBytes) {
        throw ESqlError("sql.limit", limits.maxTextBytes,
                        u"语句超过 %1 字节"_s.arg(limits.maxTextBytes));
    }
    if (const qsizetype nul = text.indexOf('\0'); nul >= 0)
        throw ESqlError("sql.syntax", nul, u"语句中有空字符"_s);
    if (!text.isValidUtf8())
        throw ESqlError("sql.syntax", 0, u"语句不是 UTF-8 文本"_s);
    return Lexer({text.data(), static_cast<size_t>(text.size())}, limits).Run();
}

} // namespace Qel::Sql
