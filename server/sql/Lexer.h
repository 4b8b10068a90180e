#pragma once

#include "sql/Compile.h"

#include <string>
#include <string_view>
#include <vector>

namespace Qel::Sql {

enum class TokenKind { Word, QuotedWord, Text, Number, Symbol, End };

struct Token
{
    TokenKind kind = TokenKind::End;
    std::string text; ///< Word: upper case; QuotedWord, Text: unquoted; Symbol: as written
    qsizetype begin = 0;
    qsizetype end = 0; ///< byte behind the token

    bool Is(TokenKind wanted, std::string_view value) const
    {
        return kind == wanted && text == value;
    }
};

/// The statement as tokens, the last one being End. Comments are refused: no client writes them,
/// and a text without them means the same to every reader. Throws ESqlError.
std::vector<Token> Tokenize(QByteArrayView text, const Limits &limits);

/// ASCII letters in upper case; everything else as it is.
std::string UpperAscii(std::string_view text);

} // namespace Qel::Sql
