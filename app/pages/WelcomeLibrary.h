#pragma once

#include "base/Uuid.h"

namespace tesserine::app {

class AppEnvironment;

/// The notes that teach, in a notebook of their own, with a few tasks to try; and the first
/// templates, where the library has none. They are ordinary notes and tasks, made by the services.
///
/// `seed` is called once, at the end of onboarding. `note` finds the first of them again, or makes
/// all of them anew when it is gone. Both save, throw `StoreError`, and belong to the main thread.
namespace welcome {

/// Returns the note to begin with.
Uuid seed(AppEnvironment& environment);
/// The templates alone, for a library that is filled by an import.
void seedTemplates(AppEnvironment& environment);
Uuid note(AppEnvironment& environment);

}  // namespace welcome
}  // namespace tesserine::app
