#pragma once

#include "core/import/ImportTypes.h"

#include <QString>
#include <QStringList>

namespace tesserine::app::importing {

/// "12 notes and 30 files (4.2 MB) in 3 notebooks. 2 of them are in the library already."
QString sentence(const ImportPreview& preview);
/// "10 notes were imported, 2 skipped and 1 failed, with 30 files (4.2 MB)."
QString sentence(const ImportReport& report);
/// What went wrong or came in changed, a line each: every failed note and every warning.
QStringList troubles(const ImportReport& report);
QString sizeText(std::uint64_t byteCount);
/// "1 note", "2 notes".
QString counted(std::size_t count, const QString& one, const QString& many);

}  // namespace tesserine::app::importing
