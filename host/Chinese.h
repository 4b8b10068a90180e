#pragma once

class QApplication;

namespace Qel::Host {

/// Gives Qt's own texts in Chinese and a font that has Chinese characters. Once, after the
/// application object was made.
void SetUpChinese(QApplication &application);

} // namespace Qel::Host
