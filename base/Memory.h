#pragma once

namespace tesserine {

/// Gives memory that was freed back to the system; the C library keeps much of it otherwise, most
/// of all what several threads have freed. Takes some milliseconds after big work. Any thread.
void returnUnusedMemory();

}  // namespace tesserine
