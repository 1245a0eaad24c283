#pragma once

#include "app/editor/PasteRules.h"

#include <QMimeData>
#include <QUrl>

#include <algorithm>

namespace tesserine::app {

/// Whether notes, tasks or places of a list are being dragged. Their titles are text for other
/// programs; who drags them across a note does not mean to write them into it.
inline bool isListDrag(const QMimeData& dragged) {
    return !dragged.hasFormat(paste::bodyType)
           && std::ranges::any_of(dragged.formats(), [](const QString& format) {
                  return format.startsWith("application/x-tesserine-");
              });
}

/// Whether files are being dragged, which are attached and not written.
inline bool isFileDrag(const QMimeData& dragged) {
    const auto urls = dragged.urls();
    return std::ranges::any_of(urls, [](const QUrl& url) { return url.isLocalFile(); });
}

}  // namespace tesserine::app
