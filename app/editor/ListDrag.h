#pragma once

#include "app/editor/PasteRules.h"

#include <QMimeData>

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

}  // namespace tesserine::app
