#pragma once

#include "app/editor/StyleCommands.h"

namespace tesserine::app {

class BodyEdit;

/// Offers colours in a menu at the cursor, and gives the selection, or what is typed next, the one
/// that is chosen. Returns at once.
void askColor(BodyEdit& body, editing::ColorUse use);

}  // namespace tesserine::app
