#pragma once

// What the meta-object compiler reads before every header: it then knows the macros of the standard
// library, whatever a header includes first.
#include <utility>
