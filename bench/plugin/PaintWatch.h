#pragma once

class QWidget;

namespace Qel::Bench {

/// Runs the events until this widget has been painted.
void WaitForPaint(QWidget *widget);

} // namespace Qel::Bench
