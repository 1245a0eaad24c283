#pragma once

#include "app/look/Theme.h"

#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>
#include <string>

namespace tesserine::app {

/// What the program was started with.
struct StartOptions {
    std::optional<std::string> library{};  ///< a folder
    std::optional<QString> screenshot{};   ///< render one state into this file, and end
    std::optional<QString> open{};         ///< the address of a place
    Theme::Scheme scheme = Theme::Scheme::system;
    std::optional<QSize> size{};  ///< of the window
    QStringList requests{};       ///< addresses, files, "new-note", "new-task"
    bool wantsHelp = false;
    bool wantsVersion = false;
    QString mistake{};  ///< a sentence; empty: none

    /// `words` without the name of the program.
    static StartOptions read(const QStringList& words);
    static QString help();
};

}  // namespace tesserine::app
