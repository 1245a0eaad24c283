#pragma once

namespace tesserine {

/// Gives memory that was freed back to the system; the C library keeps much of it otherwise, most
/// of all what several threads have freed. Takes some milliseconds after big work. Any thread.
void returnUnusedMemory();

/// Has blocks of a megabyte and more go back at once when they are freed. The C library would begin
/// to keep them after the first one, and `returnUnusedMemory` does not reach what a thread freed
/// last. Of the whole process, for good.
void returnLargeBlocksAtOnce();

}  // namespace tesserine
