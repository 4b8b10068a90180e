#pragma once

#include <QByteArrayView>
#include <QString>

namespace Qel::Sql {

/// The statement with "?" in place of each text, number and quoted name, for a log: what people
/// search for and what they pay is nobody else's business. Empty for a text that is no sequence
/// of tokens: where its literals end is not known.
QString WithoutLiterals(QByteArrayView oracleText);

} // namespace Qel::Sql
