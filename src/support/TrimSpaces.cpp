#include "support/TrimSpaces.h"

namespace kx {

QString trimSpaces(QStringView text) {
    while (text.startsWith(u' '))
        text = text.sliced(1);
    while (text.endsWith(u' '))
        text.chop(1);
    return text.toString();
}

} // namespace kx
