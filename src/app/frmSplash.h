#pragma once

#include <QFrame>

class QLabel;

namespace kx {

// The splash screen shown while the main window loads: the program's title, the running
// system, the version and the maker.
class frmSplash : public QFrame {
    Q_OBJECT
public:
    explicit frmSplash(QWidget* parent = nullptr);

    QLabel* lblTitle;
    QLabel* lblPlatform;
    QLabel* lblVersion;
    QLabel* lblCompany;
};

} // namespace kx
