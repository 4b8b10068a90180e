#pragma once

namespace Qel::Bench {

/// Times from rows to the first picture of a grid: a page of 1,000 rows and 100,000 rows of texts,
/// and a page of prices under bands, beside a bare QTableView that shows the same. Prints one line
/// a bound; false if one is missed.
bool MeasureFirstPaint();

} // namespace Qel::Bench
