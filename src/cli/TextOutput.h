#pragma once

#include <QStringList>
#include <vector>

namespace kx::cli {

// Rows of text set in columns for a terminal: each column as wide as its widest cell, columns
// two blanks apart, the first (the rows' names) aligned left and the others (values, so that
// their decimal points line up) right; no blanks end a line, and every line ends with "\n".
QString textTable(const std::vector<QStringList>& rows);

QString yesNo(bool value);

// A caption of the program's windows as a label in text output: without its mnemonic marker
// and its trailing colon ("&Duration (s):" gives "Duration (s)").
QString caption(int id);

} // namespace kx::cli
