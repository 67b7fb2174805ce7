#pragma once

#include <array>

namespace kx {

// How far a simulated plate falls short of an ideal one. The defaults are those of a good
// production plate; none() leaves an ideal plate with plain white converter noise, its
// offsets and nothing else, for tests that check exact arithmetic.
struct SimImperfections {
    // A weight put down at a point lands off it by this standard deviation in x and in y, m:
    // a loading rig that centres the weight on its mark with a cone. A weight put down by
    // hand lands a millimetre or two off.
    double placementScatter = 0.0005;

    // The load cells, as fractions of a cell's full scale (1 kN): the largest departure of
    // the loading curve from a straight line, the largest gap between loading and unloading
    // in a full-scale cycle, and the drift of the output under a steady load over creepTime.
    double nonlinearity = 0.0002;
    double hysteresis = 0.0002;
    double creep = 0.0003; // of the load
    double creepTime = 1800.0;

    // The top is not perfectly stiff: the centre of pressure is pulled towards the corners by
    // up to this much at the corners of the top, and a load in the middle reads low by
    // topError / 0.5 m of its weight, m.
    double topError = 0.0006;

    // The converter's noise density is flat above this frequency and rises as 1/f below, Hz.
    double flickerCorner = 2.0;
    // Each channel's noise level relative to the plate's noise setting; the spare fourth
    // input is not wired to a bridge and is quiet.
    std::array<double, 4> channelNoise{1.0, 1.12, 0.9, 0.3};
    // Mains hum on the bridge wiring, amplitude in codes before the converter's filter.
    double humCodes = 40.0;
    double humFrequency = 50.0;

    // Change of the bridges' zero with the gauges' temperature, normalised V per °C; the
    // zero follows the plate's warm-up through it.
    double thermalZero = 1e-5;
    // The gauges warm above the plate by this much per volt² of excitation, °C / V², and
    // take excitationSettling seconds (time constant) to reach it after a change.
    double selfHeating = 0.06;
    double excitationSettling = 90.0;
    // A new sampling frequency restarts the converter's filter and chopper: the zero jumps
    // by up to this many codes and settles with this time constant, s.
    double frequencyTransientCodes = 400.0;
    double frequencySettling = 1.5;

    // The excitation is set by a DAC: a written voltage is rounded to its step, V.
    double gageDacStep = 5.0 / 1024.0;

    static SimImperfections none() {
        SimImperfections ideal;
        ideal.placementScatter = 0;
        ideal.nonlinearity = 0;
        ideal.hysteresis = 0;
        ideal.creep = 0;
        ideal.topError = 0;
        ideal.flickerCorner = 0;
        ideal.channelNoise = {1.0, 1.0, 1.0, 1.0};
        ideal.humCodes = 0;
        ideal.thermalZero = 0;
        ideal.selfHeating = 0;
        ideal.frequencyTransientCodes = 0;
        ideal.gageDacStep = 0;
        return ideal;
    }
};

} // namespace kx
