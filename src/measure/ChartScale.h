#pragma once

namespace kx {

// The vertical limits of a strip chart and the step of its horizontal grid lines.
//
// fit() chooses "nice" limits around the data: multiples of a step of 1, 2 or 5 times a power
// of ten, at least a quarter of the span, so two to six grid divisions, at least minSpan apart
// (centred on the data when the data span less). It keeps the limits it has while the data still
// fit inside them and they are no more than twice as wide as a fresh choice, so that noise does not
// make them flicker.
class ChartScale {
public:
    double bottom() const { return m_bottom; }
    double top() const { return m_top; }
    double step() const { return m_step; }

    // Fits the limits to data between low and high (low <= high); true when they changed.
    bool fit(double low, double high, double minSpan);

private:
    double m_bottom = -1;
    double m_top = 1;
    double m_step = 0.5;
};

} // namespace kx
