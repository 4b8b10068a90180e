#include "sql/WithoutLiterals.h"

#include "sql/Lexer.h"

namespace Qel::Sql {

QString WithoutLiterals(QByteArrayView oracleText)
{
    QByteArray text;
    qsizetype end = 0;
    try {
        for (const Token &token : Tokenize(oracleText, {})) {
            if (token.kind == TokenKind::End)
                break;
            if (token.begin > end && !text.isEmpty())
                text += ' ';
            end = token.end;
            const bool asItIs = token.kind == TokenKind::Word || token.kind == TokenKind::Symbol;
            text += asItIs ? oracleText.sliced(token.begin, token.end - token.begin)
                           : QByteArrayView("?");
        }
    } catch (const ESqlError &) {
        return {};
    }
    return QString::fromUtf8(text);
}

} // namespace Qel::Sql
