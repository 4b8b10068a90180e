#include "sql/Parser.h"

#include "sql/Lexer.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Qel::Sql {

using namespace Syntax;

namespace {

// Words that end a name-less alias position: none of them can be a label or a table's alias.
constexpr std::array<std::string_view, 43> reservedWords = {
    "ALL",    "AND",     "ANY",   "AS",        "ASC",    "BETWEEN", "BY",    "CASE",  "CONNECT",
    "CROSS",  "DESC",    "ELSE",  "END",       "EXISTS", "FOR",     "FROM",  "FULL",  "GROUP",
    "HAVING", "IN",      "INNER", "INTERSECT", "INTO",   "IS",      "JOIN",  "LEFT",  "LIKE",
    "MINUS",  "NATURAL", "NOT",   "NULL",      "ON",     "OR",      "ORDER", "RIGHT", "SELECT",
    "START",  "THEN",    "UNION", "UNIQUE",    "USING",  "WHEN",    "WHERE"};

// What other readers of SQL know and this one refuses by name rather than as an unexpected word.
constexpr std::array<std::string_view, 14> refusedClauses = {
    "UNION", "INTERSECT", "MINUS",   "JOIN",    "INNER", "LEFT", "RIGHT",
    "FULL",  "CROSS",     "NATURAL", "CONNECT", "START", "FOR",  "INTO"};

template <size_t N>
bool Contains(const std::array<std::string_view, N> &words, const std::string &word)
{
    return std::find(words.begin(), words.end(), word) != words.end();
}

class Parser
{
public:
    Parser(QByteArrayView text, const Limits &limits)
        : limits_(limits)
        , tokens_(Tokenize(text, limits))
    {
    }

    std::unique_ptr<Select> Statement()
    {
        if (!IsWord("SELECT"))
            throw ESqlError("sql.not_select", Here().begin, u"只接受一条 SELECT 语句"_s);
        auto select = ParseSelect();
        const bool semicolon = Accept(";");
        if (Here().kind != TokenKind::End) {
            if (semicolon)
                throw ESqlError("sql.not_select", Here().begin, u"只接受一条语句"_s);
            Unexpected();
        }
        return select;
    }

private:
    /// Counts the brackets, sub-selects and operators that are open.
    class Level
    {
    public:
        explicit Level(Parser &parser)
            : parser_(parser)
        {
            if (++parser_.level_ > parser_.limits_.maxDepth)
                parser_.TooDeep(parser_.Here().begin);
        }
        ~Level() { --parser_.level_; }
        Q_DISABLE_COPY_MOVE(Level)

    private:
        Parser &parser_;
    };

    // --- tokens

    const Token &Here() const { return tokens_[at_]; }
    const Token &Ahead(size_t count) const
    {
        return tokens_[std::min(at_ + count, tokens_.size() - 1)];
    }
    qsizetype LastEnd() const { return at_ == 0 ? 0 : tokens_[at_ - 1].end; }
    bool IsWord(std::string_view word) const { return Here().Is(TokenKind::Word, word); }
    bool IsSymbol(std::string_view symbol) const { return Here().Is(TokenKind::Symbol, symbol); }

    bool AcceptWord(std::string_view word)
    {
        if (!IsWord(word))
            return false;
        ++at_;
        return true;
    }

    bool Accept(std::string_view symbol)
    {
        if (!IsSymbol(symbol))
            return false;
        ++at_;
        return true;
    }

    void ExpectWord(std::string_view word)
    {
        if (!AcceptWord(word))
            Unexpected(word);
    }

    void Expect(std::string_view symbol)
    {
        if (!Accept(symbol))
            Unexpected(symbol);
    }

    [[noreturn]] void Unexpected(std::string_view wanted = {}) const
    {
        const Token &token = Here();
        if (token.kind == TokenKind::Word && Contains(refusedClauses, token.text)) {
            throw ESqlError("sql.syntax", token.begin,
                            u"不支持“%1”"_s.arg(QString::fromStdString(token.text)));
        }
        QString message =
            token.kind == TokenKind::End
                ? u"语句没有写完"_s
                : u"此处不应是“%1”"_s.arg(QString::fromStdString(token.text).left(60));
        if (!wanted.empty()) {
            message += u"，应为“%1”"_s.arg(
                QString::fromLatin1(wanted.data(), static_cast<qsizetype>(wanted.size())));
        }
        throw ESqlError("sql.syntax", token.begin, message);
    }

    [[noreturn]] void TooDeep(qsizetype position) const
    {
        throw ESqlError("sql.limit", position, u"嵌套超过 %1 层"_s.arg(limits_.maxDepth));
    }

    /// Whether (+) begins `count` tokens ahead.
    bool IsMark(size_t count) const
    {
        return Ahead(count).Is(TokenKind::Symbol, "(") &&
               Ahead(count + 1).Is(TokenKind::Symbol, "+") &&
               Ahead(count + 2).Is(TokenKind::Symbol, ")");
    }

    bool IsName() const
    {
        return Here().kind == TokenKind::QuotedWord ||
               (Here().kind == TokenKind::Word && !Contains(reservedWords, Here().text));
    }

    std::string ExpectName()
    {
        if (!IsName())
            Unexpected();
        return tokens_[at_++].text;
    }

    // --- the statement

    std::unique_ptr<Select> ParseSelect()
    {
        const Level level(*this);
        auto select = std::make_unique<Select>();
        select->begin = Here().begin;
        ExpectWord("SELECT");
        select->distinct = AcceptWord("DISTINCT") || AcceptWord("UNIQUE");
        if (!select->distinct)
            AcceptWord("ALL");
        do {
            select->items.push_back(ParseItem());
        } while (Accept(","));
        ExpectWord("FROM");
        do {
            select->from.push_back(ParseSource());
        } while (Accept(","));
        if (AcceptWord("WHERE"))
            select->where = Condition();
        if (AcceptWord("GROUP")) {
            ExpectWord("BY");
            do {
                select->groupBy.push_back(Value());
            } while (Accept(","));
        }
        if (AcceptWord("HAVING"))
            select->having = Condition();
        if (AcceptWord("ORDER")) {
            ExpectWord("BY");
            do {
                select->orderBy.push_back(ParseOrder());
            } while (Accept(","));
        }
        return select;
    }

    Item ParseItem()
    {
        Item item;
        item.begin = Here().begin;
        if (Accept("*")) {
            item.star = true;
            return item;
        }
        if (IsName() && Ahead(1).Is(TokenKind::Symbol, ".") &&
            Ahead(2).Is(TokenKind::Symbol, "*")) {
            item.star = true;
            item.qualifier = Here().text;
            at_ += 3;
            return item;
        }
        item.value = Value();
        if (AcceptWord("AS"))
            item.label = ExpectName();
        else if (IsName())
            item.label = ExpectName();
        return item;
    }

    Source ParseSource()
    {
        Source source;
        source.begin = Here().begin;
        if (Accept("(")) {
            source.query = ParseSelect();
            Expect(")");
        } else {
            source.table = ExpectName();
            if (IsSymbol("."))
                throw ESqlError("sql.unknown_table", source.begin, u"表名前不能带用户名"_s);
        }
        if (IsName())
            source.alias = ExpectName();
        return source;
    }

    Order ParseOrder()
    {
        Order order;
        order.value = Value();
        order.descending = AcceptWord("DESC");
        if (!order.descending)
            AcceptWord("ASC");
        order.nullsFirst = order.descending;
        if (AcceptWord("NULLS")) {
            order.nullsFirst = AcceptWord("FIRST");
            if (!order.nullsFirst)
                ExpectWord("LAST");
        }
        return order;
    }

    // --- expressions, loosest binding first

    ExpressionPtr Make(Kind kind, qsizetype begin) const
    {
        auto expression = std::make_unique<Expression>();
        expression->kind = kind;
        expression->begin = begin;
        return expression;
    }

    void Add(Expression &parent, ExpressionPtr child) const
    {
        parent.depth = std::max(parent.depth, child->depth + 1);
        if (parent.depth > limits_.maxDepth)
            TooDeep(child->begin);
        parent.arguments.push_back(std::move(child));
    }

    ExpressionPtr Finish(ExpressionPtr expression) const
    {
        expression->end = LastEnd();
        return expression;
    }

    ExpressionPtr Condition() { return MustBeCondition(Any()); }
    ExpressionPtr Value() { return MustBeValue(Sum()); }

    ExpressionPtr MustBeCondition(ExpressionPtr expression) const
    {
        if (!expression->IsCondition())
            throw ESqlError("sql.syntax", expression->begin, u"此处应是条件"_s);
        return expression;
    }

    ExpressionPtr MustBeValue(ExpressionPtr expression) const
    {
        if (expression->IsCondition())
            throw ESqlError("sql.syntax", expression->begin, u"此处应是值，不是条件"_s);
        return expression;
    }

    ExpressionPtr Any() { return Chain(Kind::Or, "OR", &Parser::Conjunction); }
    ExpressionPtr Conjunction() { return Chain(Kind::And, "AND", &Parser::Negation); }

    ExpressionPtr Chain(Kind kind, std::string_view word, ExpressionPtr (Parser::*part)())
    {
        ExpressionPtr first = (this->*part)();
        if (!IsWord(word))
            return first;
        ExpressionPtr chain = Make(kind, first->begin);
        Add(*chain, MustBeCondition(std::move(first)));
        while (AcceptWord(word))
            Add(*chain, MustBeCondition((this->*part)()));
        return Finish(std::move(chain));
    }

    ExpressionPtr Negation()
    {
        if (!IsWord("NOT"))
            return Comparison();
        const Level level(*this);
        ExpressionPtr negation = Make(Kind::Not, Here().begin);
        ++at_;
        Add(*negation, MustBeCondition(Negation()));
        return Finish(std::move(negation));
    }

    ExpressionPtr Comparison()
    {
        if (IsWord("EXISTS") && Ahead(1).Is(TokenKind::Symbol, "(")) {
            ExpressionPtr exists = Make(Kind::Exists, Here().begin);
            at_ += 2;
            exists->query = ParseSelect();
            Expect(")");
            return Finish(std::move(exists));
        }
        ExpressionPtr left = Sum();
        const qsizetype begin = left->begin;
        if (const std::string comparison = ComparisonSymbol(); !comparison.empty()) {
            ExpressionPtr compare = Make(Kind::Compare, begin);
            compare->text = comparison;
            ++at_;
            Add(*compare, MustBeValue(std::move(left)));
            Add(*compare, MustBeValue(Sum()));
            return Finish(std::move(compare));
        }
        if (AcceptWord("IS")) {
            ExpressionPtr isNull = Make(Kind::IsNull, begin);
            isNull->negated = AcceptWord("NOT");
            ExpectWord("NULL");
            Add(*isNull, MustBeValue(std::move(left)));
            return Finish(std::move(isNull));
        }
        const bool negated = IsWord("NOT") && (Ahead(1).Is(TokenKind::Word, "LIKE") ||
                                               Ahead(1).Is(TokenKind::Word, "BETWEEN") ||
                                               Ahead(1).Is(TokenKind::Word, "IN"));
        if (negated)
            ++at_;
        ExpressionPtr test;
        if (AcceptWord("LIKE"))
            test = Like(begin, MustBeValue(std::move(left)));
        else if (AcceptWord("BETWEEN"))
            test = Between(begin, MustBeValue(std::move(left)));
        else if (AcceptWord("IN"))
            test = In(begin, MustBeValue(std::move(left)));
        else
            return left;
        test->negated = negated;
        return Finish(std::move(test));
    }

    std::string ComparisonSymbol() const
    {
        if (Here().kind != TokenKind::Symbol)
            return {};
        const std::string &symbol = Here().text;
        if (symbol == "!=" || symbol == "^=")
            return "<>";
        return symbol == "=" || symbol == "<>" || symbol == "<" || symbol == "<=" ||
                       symbol == ">" || symbol == ">="
                   ? symbol
                   : std::string();
    }

    ExpressionPtr Like(qsizetype begin, ExpressionPtr value)
    {
        ExpressionPtr like = Make(Kind::Like, begin);
        Add(*like, std::move(value));
        Add(*like, MustBeValue(Sum()));
        if (AcceptWord("ESCAPE"))
            Add(*like, MustBeValue(Sum()));
        return like;
    }

    ExpressionPtr Between(qsizetype begin, ExpressionPtr value)
    {
        ExpressionPtr between = Make(Kind::Between, begin);
        Add(*between, std::move(value));
        Add(*between, MustBeValue(Sum()));
        ExpectWord("AND");
        Add(*between, MustBeValue(Sum()));
        return between;
    }

    ExpressionPtr In(qsizetype begin, ExpressionPtr value)
    {
        Expect("(");
        const bool query = IsWord("SELECT");
        ExpressionPtr in = Make(query ? Kind::InQuery : Kind::In, begin);
        Add(*in, std::move(value));
        if (query) {
            in->query = ParseSelect();
        } else {
            const Level level(*this);
            do {
                Add(*in, MustBeValue(Sum()));
            } while (Accept(","));
        }
        Expect(")");
        return in;
    }

    ExpressionPtr Sum() { return Arithmetic({"+", "-", "||"}, &Parser::Product); }
    ExpressionPtr Product() { return Arithmetic({"*", "/", {}}, &Parser::Signed); }

    ExpressionPtr Arithmetic(const std::array<std::string_view, 3> &operators,
                             ExpressionPtr (Parser::*part)())
    {
        ExpressionPtr left = (this->*part)();
        while (Here().kind == TokenKind::Symbol && Contains(operators, Here().text)) {
            ExpressionPtr both = Make(Kind::Arithmetic, left->begin);
            both->text = Here().text;
            ++at_;
            Add(*both, MustBeValue(std::move(left)));
            Add(*both, MustBeValue((this->*part)()));
            left = Finish(std::move(both));
        }
        return left;
    }

    ExpressionPtr Signed()
    {
        if (!IsSymbol("-") && !IsSymbol("+"))
            return Primary();
        const Level level(*this);
        const qsizetype begin = Here().begin;
        const bool minus = IsSymbol("-");
        ++at_;
        ExpressionPtr value = MustBeValue(Signed());
        if (!minus)
            return value;
        ExpressionPtr negative = Make(Kind::Minus, begin);
        Add(*negative, std::move(value));
        return Finish(std::move(negative));
    }

    ExpressionPtr Primary()
    {
        const Level level(*this);
        const Token &token = Here();
        switch (token.kind) {
        case TokenKind::Number:
            return Literal(Kind::Number);
        case TokenKind::Text:
            return Literal(Kind::Text);
        case TokenKind::Symbol:
            if (IsSymbol("("))
                return Bracket();
            break;
        case TokenKind::Word:
            if (token.text == "NULL")
                return Literal(Kind::Null);
            if (token.text == "CASE")
                return Case();
            if (token.text == "DATE" && Ahead(1).kind == TokenKind::Text)
                return DateLiteral();
            if (Ahead(1).Is(TokenKind::Symbol, "(") && !IsMark(1) &&
                !Contains(reservedWords, token.text))
                return token.text == "CAST" ? Cast() : Call();
            break;
        default:
            break;
        }
        return Name();
    }

    ExpressionPtr Literal(Kind kind)
    {
        ExpressionPtr literal = Make(kind, Here().begin);
        literal->text = Here().text;
        ++at_;
        return Finish(std::move(literal));
    }

    /// DATE '2024-03-05' is TO_DATE('2024-03-05', 'YYYY-MM-DD').
    ExpressionPtr DateLiteral()
    {
        ExpressionPtr call = Make(Kind::Call, Here().begin);
        call->text = "TO_DATE";
        ++at_;
        Add(*call, Literal(Kind::Text));
        ExpressionPtr format = Make(Kind::Text, call->begin);
        format->text = "YYYY-MM-DD";
        Add(*call, std::move(format));
        return Finish(std::move(call));
    }

    ExpressionPtr Bracket()
    {
        const qsizetype begin = Here().begin;
        Expect("(");
        ExpressionPtr inner;
        if (IsWord("SELECT")) {
            inner = Make(Kind::Query, begin);
            inner->query = ParseSelect();
        } else {
            inner = Any();
        }
        Expect(")");
        inner->begin = begin;
        return Finish(std::move(inner));
    }

    ExpressionPtr Case()
    {
        ExpressionPtr result = Make(Kind::Case, Here().begin);
        ExpectWord("CASE");
        const bool simple = !IsWord("WHEN");
        if (simple) {
            result->kind = Kind::SimpleCase;
            Add(*result, Value());
        }
        if (!IsWord("WHEN"))
            Unexpected("WHEN");
        while (AcceptWord("WHEN")) {
            Add(*result, simple ? Value() : Condition());
            ExpectWord("THEN");
            Add(*result, Value());
        }
        if (AcceptWord("ELSE"))
            Add(*result, Value());
        ExpectWord("END");
        return Finish(std::move(result));
    }

    ExpressionPtr Cast()
    {
        ExpressionPtr cast = Make(Kind::Cast, Here().begin);
        at_ += 2;
        Add(*cast, Value());
        ExpectWord("AS");
        cast->text = ExpectName();
        if (Accept("(")) {
            cast->size = ExpectSize();
            if (Accept(","))
                ExpectSize();
            if (IsWord("CHAR") || IsWord("BYTE"))
                ++at_;
            Expect(")");
        }
        Expect(")");
        return Finish(std::move(cast));
    }

    int ExpectSize()
    {
        const std::string &digits = Here().text;
        if (Here().kind != TokenKind::Number || digits.size() > 4 ||
            digits.find_first_not_of("0123456789") != std::string::npos)
            Unexpected();
        ++at_;
        return std::stoi(digits);
    }

    ExpressionPtr Call()
    {
        ExpressionPtr call = Make(Kind::Call, Here().begin);
        call->text = Here().text;
        at_ += 2;
        if (IsSymbol("*")) {
            Add(*call, Make(Kind::Star, Here().begin));
            ++at_;
        } else if (!IsSymbol(")")) {
            call->distinct = AcceptWord("DISTINCT");
            do {
                Add(*call, Value());
            } while (Accept(","));
        }
        Expect(")");
        if (IsWord("OVER")) {
            throw ESqlError("sql.function", Here().begin,
                            u"不支持分析函数“%1 OVER”"_s.arg(QString::fromStdString(call->text)));
        }
        return Finish(std::move(call));
    }

    ExpressionPtr Name()
    {
        ExpressionPtr name = Make(Kind::Name, Here().begin);
        name->text = ExpectName();
        if (Accept(".")) {
            name->qualifier = std::move(name->text);
            name->text = ExpectName();
            if (IsSymbol("."))
                throw ESqlError("sql.unknown_column", name->begin, u"列名前只能带一个表名"_s);
        }
        if (IsMark(0)) {
            name->marked = true;
            at_ += 3;
        }
        return Finish(std::move(name));
    }

    const Limits &limits_;
    std::vector<Token> tokens_;
    size_t at_ = 0;
    int level_ = 0;
};

} // namespace

std::unique_ptr<Select> Parse(QByteArrayView text, const Limits &limits)
{
    return Parser(text, limits).Statement();
}

} // namespace Qel::Sql
