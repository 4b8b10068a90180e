#include "sql/Grams.h"

#include <algorithm>
#include <numeric>
#include <set>

namespace Qel::Sql {

namespace {

constexpr size_t GramSize = 3;
/// Of a long part the first grams tell enough.
constexpr size_t MostGrams = 12;
constexpr size_t PostgresGramSize = 2;

using Characters = std::vector<std::string>; ///< as they stand

/// One character as the tokenizer keeps it whole: what is neither letter nor digit of ASCII would
/// part tokens, and stands in the private use area instead. What may be mixed up there costs a
/// candidate too many and no row.
std::string Kept(std::string_view character)
{
    const auto byte = static_cast<unsigned char>(character.front());
    const bool digit = byte >= '0' && byte <= '9';
    const bool letter = (byte | 0x20) >= 'a' && (byte | 0x20) <= 'z';
    if (byte >= 0x80 || digit || letter)
        return std::string(character);
    std::string moved = "\xEE\x80\x80"; // U+E000
    moved[1] = static_cast<char>(0x80 | byte >> 6);
    moved[2] = static_cast<char>(0x80 | (byte & 0x3F));
    return moved;
}

Characters CharactersOf(std::string_view utf8)
{
    Characters characters;
    for (size_t begin = 0; begin < utf8.size();) {
        size_t end = begin + 1;
        while (end < utf8.size() && (static_cast<unsigned char>(utf8[end]) & 0xC0) == 0x80)
            ++end;
        characters.emplace_back(utf8.substr(begin, end - begin));
        begin = end;
    }
    return characters;
}

std::string GramAt(const Characters &characters, size_t at)
{
    std::string gram;
    const size_t end = std::min(at + GramSize, characters.size());
    for (; at < end; ++at)
        gram += Kept(characters[at]);
    return gram;
}

/// The parts of a pattern between its wildcards.
std::vector<Characters> PartsOf(std::string_view pattern, char escape)
{
    std::vector<Characters> parts;
    std::string part;
    const auto end = [&] {
        if (!part.empty())
            parts.push_back(CharactersOf(part));
        part.clear();
    };
    for (size_t i = 0; i < pattern.size(); ++i) {
        if (escape != 0 && pattern[i] == escape && i + 1 < pattern.size())
            part += pattern[++i];
        else if (pattern[i] == '%' || pattern[i] == '_')
            end();
        else
            part += pattern[i];
    }
    end();
    return parts;
}

/// The longest of them; null: there is none.
const Characters *LongestOf(const std::vector<Characters> &parts)
{
    const auto longest =
        std::max_element(parts.begin(), parts.end(), [](const Characters &a, const Characters &b) {
            return a.size() < b.size();
        });
    return longest == parts.end() ? nullptr : &*longest;
}

} // namespace

std::string GramsOf(std::string_view upperText)
{
    const Characters characters = CharactersOf(upperText);
    std::string grams;
    for (size_t at = 0; at < characters.size(); ++at)
        grams += GramAt(characters, at) + ' ';
    return grams;
}

qint64 SumOfGrams(qint64 row, std::string_view grams)
{
    // FNV-1a; the upper half, so that a sum has room for two thousand million of them.
    constexpr quint64 basis = 14695981039346656037u;
    constexpr quint64 prime = 1099511628211u;
    std::set<quint64> hashes;
    for (size_t begin = 0; begin < grams.size();) {
        const size_t end = std::min(grams.find(' ', begin), grams.size());
        quint64 hash = (basis ^ static_cast<quint64>(row)) * prime;
        for (size_t at = begin; at < end; ++at) {
            const auto byte = static_cast<unsigned char>(grams[at]);
            const bool upper = byte >= 'A' && byte <= 'Z';
            hash = (hash ^ (upper ? byte | 0x20u : byte)) * prime;
        }
        if (end > begin)
            hashes.insert(hash >> 32);
        begin = end + 1;
    }
    return std::accumulate(hashes.begin(), hashes.end(), qint64(0));
}

std::string GramsOfPattern(std::string_view upperPattern, char escape)
{
    const std::vector<Characters> parts = PartsOf(upperPattern, escape);
    const Characters *longest = LongestOf(parts);
    if (!longest)
        return {};
    // A short part begins grams; looking those up costs more, so only if there is no long one.
    if (longest->size() < GramSize)
        return '"' + GramAt(*longest, 0) + "\" *";
    std::string expression;
    size_t count = 0;
    for (const Characters &part : parts) {
        for (size_t at = 0; at + GramSize <= part.size() && count < MostGrams; ++at, ++count) {
            if (count > 0)
                expression += " AND ";
            expression += '"' + GramAt(part, at) + '"';
        }
    }
    return expression;
}

std::vector<std::string> PartsOfPattern(std::string_view pattern, char escape)
{
    const std::vector<Characters> parts = PartsOf(pattern, escape);
    const Characters *longest = LongestOf(parts);
    if (!longest)
        return {};
    if (longest->size() < PostgresGramSize)
        return {longest->front()};
    std::vector<std::string> found;
    size_t count = 0;
    for (const Characters &part : parts) {
        if (part.size() < PostgresGramSize || count == MostGrams)
            continue;
        const size_t grams = std::min(part.size() - PostgresGramSize + 1, MostGrams - count);
        count += grams;
        found.push_back(std::accumulate(
            part.begin(), part.begin() + static_cast<std::ptrdiff_t>(grams + PostgresGramSize - 1),
            std::string()));
    }
    return found;
}

std::string GramTableOf(std::string_view table)
{
    return "QEL_GRAMS_" + std::string(table);
}

} // namespace Qel::Sql
