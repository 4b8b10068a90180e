#include "sql/ExactSum.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <string>

namespace Qel::Sql {

namespace {

constexpr int digitsOfReal = 15;
constexpr double usualUnits = 1e6; ///< amounts have six places at most
constexpr int usualPlaces = 6;
constexpr double mostDigits = 1e15;
constexpr int digitsBehindQuotient = 25;

NumberValue Read(const std::string &decimal)
{
    double value = 0;
    std::from_chars(decimal.data(), decimal.data() + decimal.size(), value);
    return value;
}

} // namespace

void ExactSum::Add(qint64 number)
{
    AddDecimal(number, 0);
}

void ExactSum::Add(double number)
{
    const double units = std::round(number * usualUnits);
    if (std::abs(units) < mostDigits && units / usualUnits == number)
        return AddDecimal(static_cast<qint64>(units), usualPlaces);
    // "-1.23456789012345e-07"
    std::array<char, 40> buffer;
    const int length =
        std::snprintf(buffer.data(), buffer.size(), "%.*e", digitsOfReal - 1, number);
    std::string text(buffer.data(), static_cast<size_t>(length));
    const size_t exponent = text.find('e');
    if (exponent == std::string::npos) { // no number at all
        rounds_ = true;
        return AddDecimal(0, 0);
    }
    int places = digitsOfReal - 1 - std::stoi(text.substr(exponent + 1));
    text.resize(exponent);
    std::erase(text, '.');
    qint64 digits = std::stoll(text);
    for (; digits != 0 && digits % 10 == 0 && places > 0; --places)
        digits /= 10;
    if (digits != 0)
        AddDecimal(digits, places);
    else
        AddDecimal(0, 0);
}

void ExactSum::AddDecimal(qint64 digits, int places)
{
    ++count_;
    approximation_ += static_cast<double>(digits) * std::pow(10.0, -places);
    Wide value = digits;
    rounds_ = rounds_ || !SetPlaces(std::max(places, places_));
    for (int i = std::max(places, 0); i < places_ && !rounds_; ++i)
        rounds_ = __builtin_mul_overflow(value, 10, &value);
    for (int i = places; i < 0 && !rounds_; ++i)
        rounds_ = __builtin_mul_overflow(value, 10, &value);
    rounds_ = rounds_ || __builtin_add_overflow(total_, value, &total_);
}

bool ExactSum::SetPlaces(int places)
{
    for (; places_ < places; ++places_) {
        if (__builtin_mul_overflow(total_, 10, &total_))
            return false;
    }
    return true;
}

NumberValue ExactSum::Sum() const
{
    return Quotient(1);
}

NumberValue ExactSum::Average() const
{
    return Quotient(count_);
}

/// By hand, digit by digit, so that the double is the nearest one to the decimal.
NumberValue ExactSum::Quotient(qint64 divisor) const
{
    if (rounds_)
        return approximation_ / static_cast<double>(divisor);
    using Size = unsigned __int128;
    Size rest = total_ < 0 ? -static_cast<Size>(total_) : static_cast<Size>(total_);
    Size whole = rest / static_cast<Size>(divisor);
    rest %= static_cast<Size>(divisor);
    if (places_ == 0 && rest == 0 && whole <= static_cast<Size>(INT64_MAX))
        return total_ < 0 ? -static_cast<qint64>(whole) : static_cast<qint64>(whole);
    std::string digits;
    int places = places_;
    for (; whole > 0; whole /= 10)
        digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(whole % 10)));
    if (digits.empty())
        digits = "0";
    for (int i = 0; i < digitsBehindQuotient && rest > 0; ++i, ++places) {
        rest *= 10;
        digits += static_cast<char>('0' + static_cast<int>(rest / static_cast<Size>(divisor)));
        rest %= static_cast<Size>(divisor);
    }
    return Read((total_ < 0 ? "-" : "") + digits + "e-" + std::to_string(places));
}

} // namespace Qel::Sql
