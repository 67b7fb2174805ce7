#include "support/NumberFormat.h"

#include "support/NumberText.h"

#include <cmath>

namespace kx {

NumberFormat::NumberFormat(QStringView pattern) {
    if (pattern.isEmpty()) {
        m_general = true;
        return;
    }
    const qsizetype separator = pattern.indexOf(u';');
    m_positive = parseSection(separator < 0 ? pattern : pattern.left(separator));
    if (separator >= 0) {
        m_negative = parseSection(pattern.mid(separator + 1));
        m_hasNegative = true;
    }
}

NumberFormat::Section NumberFormat::parseSection(QStringView text) {
    Section section;
    qsizetype i = 0;
    const qsizetype size = text.size();
    while (i < size && text[i] != u'0' && text[i] != u'.')
        ++i;
    section.prefix = text.left(i).toString();
    for (; i < size && text[i] == u'0'; ++i)
        ++section.integerDigits;
    if (i < size && text[i] == u'.') {
        section.point = true;
        for (++i; i < size && text[i] == u'0'; ++i)
            ++section.decimals;
    }
    section.suffix = text.mid(i).toString();
    return section;
}

template <typename F>
QString NumberFormat::formatAs(F value) const {
    char digits[kMaxNumberChars];
    if (m_general)
        return QString::fromLatin1(digits, appendGeneral(digits, value) - digits);

    const Section* section = &m_positive;
    const char* begin = digits;
    const char* end = nullptr;
    if (m_hasNegative && value < 0) {
        end = appendFixed(digits, value, m_negative.decimals, m_negative.integerDigits);
        if (digits[0] == '-') {
            // The negative section carries its own sign.
            section = &m_negative;
            ++begin;
        } else {
            end = appendFixed(digits, F(0), m_positive.decimals, m_positive.integerDigits);
        }
    } else {
        end = appendFixed(digits, value, m_positive.decimals, m_positive.integerDigits);
    }

    QString text = section->prefix;
    text += QLatin1String(begin, end - begin);
    if (section->point && section->decimals == 0)
        text += u'.';
    text += section->suffix;
    return text;
}

QString NumberFormat::formatReal(double value) const {
    return formatAs(value);
}

QString NumberFormat::formatReal(float value) const {
    return formatAs(value);
}

} // namespace kx
