#include "calibration/CalibrationReportPdf.h"

#include "calibration/CalibrationReport.h"
#include "calibration/PlatePainting.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <algorithm>

namespace kx {

namespace {

constexpr int Dpi = 300;
// The picture is drawn at screen scale, so its pens, arrow heads and legend look as on screen.
constexpr double PictureScale = Dpi / 96.0;
constexpr double PictureHeightMm = 120;

double mm(double millimetres) {
    return millimetres * Dpi / 25.4;
}

// A face that holds the °, ², ± and · of the texts; Qt falls back to another where it is missing.
QFont font(double points, bool bold = false) {
    QFont f(QStringLiteral("DejaVu Sans"));
    f.setPointSizeF(points);
    f.setBold(bold);
    return f;
}

// Walks the report page by page, breaking pages where the content needs it. Without a painter
// it only measures, to learn the page count the footers state.
class ReportLayout {
public:
    ReportLayout(QPainter* painter, QPdfWriter& writer, const CalibrationReport& report,
                 int pageCount)
        : m_painter(painter)
        , m_writer(writer)
        , m_report(report)
        , m_pageCount(pageCount)
        , m_width(writer.width())
        , m_bottom(writer.height() - mm(9)) {
        // One column of values through the whole report.
        const QFontMetricsF labels = metrics(font(9));
        for (const ReportPage& page : report.pages)
            for (const ReportSection& section : page.sections)
                for (const ReportField& field : section.fields)
                    m_labelWidth = std::max(m_labelWidth, labels.horizontalAdvance(field.label));
    }

    // The number of pages laid out.
    int run() {
        title();
        for (std::size_t p = 0; p < m_report.pages.size(); ++p) {
            if (p > 0)
                newPage();
            for (const ReportSection& section : m_report.pages[p].sections)
                this->section(section);
        }
        footer();
        return m_page;
    }

private:
    QFontMetricsF metrics(const QFont& f) const { return QFontMetricsF(f, &m_writer); }

    void newPage() {
        footer();
        if (m_painter)
            m_writer.newPage();
        ++m_page;
        m_y = 0;
    }

    // Room for `height` on this page, or a new page.
    void need(double height) {
        if (m_y + height > m_bottom && m_y > 0)
            newPage();
    }

    void text(const QRectF& box, const QFont& f, int flags, const QString& text) {
        if (!m_painter)
            return;
        m_painter->setFont(f);
        m_painter->setPen(Qt::black);
        m_painter->drawText(box, flags, text);
    }

    void footer() {
        const QFont f = font(8);
        const double height = metrics(f).height();
        const QRectF box(0, m_writer.height() - height, m_width, height);
        text(box, f, Qt::AlignLeft | Qt::AlignVCenter, m_report.title);
        text(box, f, Qt::AlignRight | Qt::AlignVCenter,
             m_report.pageNumbers.arg(m_page).arg(m_pageCount));
        if (m_painter) {
            m_painter->setPen(QPen(Qt::gray, mm(0.2)));
            m_painter->drawLine(QPointF(0, box.top() - mm(1)), QPointF(m_width, box.top() - mm(1)));
        }
    }

    void title() {
        const QFont f = font(17, true);
        const double height = metrics(f).height();
        text(QRectF(0, m_y, m_width, height), f, Qt::AlignLeft | Qt::AlignVCenter, m_report.title);
        m_y += height + mm(1.5);
        if (m_painter) {
            m_painter->setPen(QPen(Qt::black, mm(0.4)));
            m_painter->drawLine(QPointF(0, m_y), QPointF(m_width, m_y));
        }
        m_y += mm(3);
    }

    void section(const ReportSection& s) {
        const QFont headingFont = font(11, true);
        const double heading = metrics(headingFont).height();
        // A heading never stands alone at the foot of a page.
        need(heading + mm(1) + 2 * metrics(font(9)).height());
        text(QRectF(0, m_y, m_width, heading), headingFont, Qt::AlignLeft | Qt::AlignVCenter,
             s.heading);
        m_y += heading + mm(1);
        fields(s.fields);
        if (s.table)
            table(*s.table);
        if (s.picture)
            picture();
        notes(s.notes);
        m_y += mm(4);
    }

    void fields(const std::vector<ReportField>& list) {
        const QFont labelFont = font(9);
        const QFont valueFont = font(9, true);
        const QFontMetricsF labels = metrics(labelFont);
        const double indent = mm(4);
        const double valueLeft = indent + m_labelWidth + mm(5);
        const QRectF valueRoom(valueLeft, 0, m_width - valueLeft, 1e6);
        for (const ReportField& field : list) {
            const double height =
                metrics(valueFont)
                    .boundingRect(valueRoom, Qt::TextWordWrap | Qt::TextWrapAnywhere, field.value)
                    .height();
            need(height);
            text(QRectF(indent, m_y, m_labelWidth, labels.height()), labelFont,
                 Qt::AlignLeft | Qt::AlignVCenter, field.label);
            text(QRectF(valueLeft, m_y, valueRoom.width(), height), valueFont,
                 Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap | Qt::TextWrapAnywhere,
                 field.value);
            m_y += height + mm(0.6);
        }
        if (!list.empty())
            m_y += mm(1);
    }

    void table(const ReportTable& t) {
        const QFont headFont = font(9, true);
        const QFont cellFont = font(9);
        const double pad = mm(2.5);
        const auto columns = static_cast<std::size_t>(t.header.size());
        std::vector<double> widths(columns, 0);
        const auto widen = [&](const QStringList& row, const QFontMetricsF& m) {
            for (std::size_t i = 0; i < columns && i < std::size_t(row.size()); ++i)
                widths[i] = std::max(widths[i], m.horizontalAdvance(row[qsizetype(i)]) + 2 * pad);
        };
        widen(t.header, metrics(headFont));
        for (const QStringList& row : t.rows)
            widen(row, metrics(cellFont));
        const double indent = mm(4);
        double total = 0;
        for (double w : widths)
            total += w;
        // Too wide a table shrinks to the page rather than running off it.
        if (total > m_width - indent) {
            for (double& w : widths)
                w *= (m_width - indent) / total;
            total = m_width - indent;
        }
        const double rowHeight = metrics(cellFont).height() + mm(1.6);
        const auto drawRow = [&](const QStringList& row, const QFont& f, bool head) {
            if (m_painter) {
                if (head)
                    m_painter->fillRect(QRectF(indent, m_y, total, rowHeight),
                                        QColor(230, 230, 230));
                m_painter->setPen(QPen(Qt::gray, mm(0.15)));
                m_painter->drawLine(QPointF(indent, m_y + rowHeight),
                                    QPointF(indent + total, m_y + rowHeight));
            }
            double x = indent;
            for (std::size_t i = 0; i < columns; ++i) {
                const QString cell = i < std::size_t(row.size()) ? row[qsizetype(i)] : QString();
                // Row heads to the left, numbers to the right.
                const int align = (i == 0 ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter;
                text(QRectF(x + pad, m_y, widths[i] - 2 * pad, rowHeight), f, align, cell);
                x += widths[i];
            }
            m_y += rowHeight;
        };
        need(2 * rowHeight);
        drawRow(t.header, headFont, true);
        for (const QStringList& row : t.rows) {
            if (m_y + rowHeight > m_bottom) {
                newPage();
                drawRow(t.header, headFont, true); // the header again on the next page
            }
            drawRow(row, cellFont, false);
        }
        m_y += mm(1.5);
    }

    void picture() {
        const double height = mm(PictureHeightMm);
        need(height);
        if (m_painter) {
            m_painter->save();
            m_painter->translate(0, m_y);
            m_painter->scale(PictureScale, PictureScale);
            QFont f = font(9 / PictureScale);
            m_painter->setFont(f);
            paintPlate(*m_painter, QRectF(0, 0, m_width / PictureScale, height / PictureScale),
                       m_report.plate);
            m_painter->restore();
        }
        m_y += height + mm(2);
    }

    void notes(const QStringList& lines) {
        const QFont f = font(8.5);
        const QRectF room(mm(4), 0, m_width - mm(4), 1e6);
        for (const QString& line : lines) {
            const double height = metrics(f).boundingRect(room, Qt::TextWordWrap, line).height();
            need(height);
            text(QRectF(room.left(), m_y, room.width(), height), f,
                 Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, line);
            m_y += height + mm(0.5);
        }
    }

    QPainter* m_painter;
    QPdfWriter& m_writer;
    const CalibrationReport& m_report;
    int m_pageCount;
    double m_width;
    double m_bottom; // content ends above the footer
    double m_labelWidth = 0;
    double m_y = 0;
    int m_page = 1;
};

} // namespace

bool writeReportPdf(const CalibrationReport& report, const QString& path) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    {
        QPdfWriter writer(&file);
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageMargins(QMarginsF(18, 15, 18, 12), QPageLayout::Millimeter);
        writer.setResolution(Dpi);
        writer.setTitle(report.title);
        const int pages = ReportLayout(nullptr, writer, report, 0).run();
        QPainter painter;
        if (!painter.begin(&writer))
            return false; // the save file is dropped unwritten
        ReportLayout(&painter, writer, report, pages).run();
        if (!painter.end())
            return false;
    }
    // commit() overlooks a failure to flush its buffer and would publish a cut file.
    if (!file.flush())
        file.cancelWriting();
    return file.commit();
}

} // namespace kx
