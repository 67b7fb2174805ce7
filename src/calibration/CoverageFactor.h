#pragma once

namespace kx {

// The coverage factor for about 95 % (two-sided) of a standard uncertainty estimated with this
// many degrees of freedom: Student's t at 97.5 %. It falls from 12.71 at one degree of freedom
// towards the normal distribution's 1.96; infinite below one, where nothing is known.
double coverageFactor95(int degreesOfFreedom);

} // namespace kx
