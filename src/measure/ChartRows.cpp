#include "measure/ChartRows.h"

#include "measure/StripChart.h"

#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace kx {

void addChartRow(QGridLayout& grid, int row, StripChart* chart, QLabel* max, QLabel* name,
                 QLabel* min) {
    auto* labels = new QVBoxLayout;
    labels->addWidget(max);
    labels->addStretch();
    labels->addWidget(name);
    labels->addStretch();
    labels->addWidget(min);
    grid.addLayout(labels, row, 0);
    grid.addWidget(chart, row, 1);
    grid.setRowStretch(row, 1);
}

void finishChartRows(QGridLayout& grid, int widestLimit) {
    grid.setColumnStretch(1, 1);
    grid.setColumnMinimumWidth(0, widestLimit);
}

} // namespace kx
