#pragma once

#include <QValidator>

namespace kx {

// Lets only hexadecimal digits into a box, shown in upper case; editing keys work as usual.
// A text above FF still passes: the box's user is told why it cannot be written.
class HexByteValidator : public QValidator {
    Q_OBJECT
public:
    using QValidator::QValidator;
    State validate(QString& input, int& pos) const override;
};

} // namespace kx
