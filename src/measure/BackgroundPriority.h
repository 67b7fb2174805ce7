#pragma once

namespace kx {

// Lowers the priority of the calling thread, so that long work beside the window (writing a
// capture file, reading a journal) leaves the processor to the window's thread first: on a
// busy machine with few cores a thread of equal priority kept the window from its events for
// a tenth of a second.
void lowerThisThreadsPriority();

} // namespace kx
