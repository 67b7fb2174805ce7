#pragma once

class QGridLayout;
class QLabel;

namespace kx {

class StripChart;

// A stack of strip charts as the dialogs show them: each chart in column 1 of its row, its
// upper scale limit, its name and its lower limit down column 0 beside it, and every row taking
// an equal share of the height. `widestLimit` sizes column 0.
void addChartRow(QGridLayout& grid, int row, StripChart* chart, QLabel* max, QLabel* name,
                 QLabel* min);
void finishChartRows(QGridLayout& grid, int widestLimit);

} // namespace kx
