#pragma once

#include <QElapsedTimer>

#include <algorithm>
#include <ctime>
#include <vector>

namespace Qel::Bench {

template <typename Function>
double Milliseconds(Function function)
{
    QElapsedTimer timer;
    timer.start();
    function();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

/// Processor time of the whole process, helper threads included.
template <typename Function>
double CpuMilliseconds(Function function)
{
    const std::clock_t start = std::clock();
    function();
    return static_cast<double>(std::clock() - start) * 1e3 / CLOCKS_PER_SEC;
}

/// `values` must hold something.
inline double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<qsizetype>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace Qel::Bench
