#include "app/ConverterPanel.h"

#include "app/PlateInput.h"
#include "resources/StringTable.h"
#include "support/NumberFormat.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>

namespace kx {

namespace {

constexpr int ResolutionCaption = 730;
constexpr int DefaultCaption = 760;
constexpr int CurrentCaption = 770;
constexpr auto VoltsAndHertz = u"0.000";

int column(Which which) {
    return which == Which::Current ? 0 : 1;
}

// How one parameter is read, clamped and written. The limits and their comparisons are the
// converter's: only the gage voltage's lower test includes its bound, and the -3 dB bounds
// are compared in single precision.
struct ParameterRule {
    const char* name; // txt<name>Curr / txt<name>Def
    int caption;
    const char* accessibleSuffix; // tells the two boxes of the turbo / decimation row apart
    int width;                    // in digits
    QString (*read)(PlateDevice&, Which);
    void (*write)(PlateDevice&, Which, double);
};

const ParameterRule rules[] = {
    {"AVoltage", 710, "", 10,
     [](PlateDevice& p, Which w) { return formatNumber(p.GageVoltage(w), VoltsAndHertz); },
     [](PlateDevice& p, Which w, double x) {
         float v = toSingle(x);
         if (v <= 0)
             v = 0.01f;
         if (v > 5)
             v = 5;
         p.SetGageVoltage(w, v);
     }},
    {"Turbo", 720, " (turbo)", 3,
     [](PlateDevice& p, Which w) { return QString::number(p.TurboRate(w)); },
     [](PlateDevice& p, Which w, double x) {
         p.SetTurboRate(w, std::clamp<qint16>(toInt16(x), 1, 16));
     }},
    {"Decimation", 720, " (decimation)", 4,
     [](PlateDevice& p, Which w) { return QString::number(p.DecimationRate(w)); },
     [](PlateDevice& p, Which w, double x) {
         p.SetDecimationRate(w, std::clamp<qint16>(toInt16(x), 20, 8000));
     }},
    {"SampFreq", 740, "", 10,
     [](PlateDevice& p, Which w) { return formatNumber(p.SampleFrequency(w), VoltsAndHertz); },
     [](PlateDevice& p, Which w, double x) {
         p.SetSampleFrequency(w, std::clamp(toSingle(x), 9.0f, 1000.0f));
     }},
    {"3dBFreq", 750, "", 10,
     [](PlateDevice& p, Which w) { return formatNumber(p.CutoffFrequency(w), VoltsAndHertz); },
     [](PlateDevice& p, Which w, double x) {
         p.SetCutoffFrequency(w, std::clamp(toSingle(x), 2.358f, 262.0f));
     }},
};

} // namespace

ConverterPanel::ConverterPanel(Prompt& prompt, const SelectedPlate& plate, QWidget* parent)
    : PlatePanel("frmConverter", 700, prompt, plate, parent)
    , lblAVoltage(makeLabel("lblAVoltage", 710))
    , lblTurbo(makeLabel("lblTurbo", 720))
    , lbResolution(makeLabel("lbResolution", ResolutionCaption))
    , lblSampFreq(makeLabel("lblSampFreq", 740))
    , lbl3dBFreq(makeLabel("lbl3dBFreq", 750))
    , lblParamDef(makeLabel("lblParamDef", DefaultCaption))
    , lblParamCurr(makeLabel("lblParamCurr", CurrentCaption)) {
    for (int p = 0; p < ParameterCount; ++p) {
        const ParameterRule& rule = rules[p];
        for (Which which : {Which::Current, Which::Default}) {
            const bool current = which == Which::Current;
            const QString name = QStringLiteral("txt") + QLatin1String(rule.name) +
                                 (current ? QStringLiteral("Curr") : QStringLiteral("Def"));
            const QString accessible = plainCaption(rule.caption) + u' ' +
                                       plainCaption(current ? CurrentCaption : DefaultCaption) +
                                       QLatin1String(rule.accessibleSuffix);
            const auto parameter = static_cast<Parameter>(p);
            m_boxes[p][column(which)] =
                makeBox(name, accessible, rule.width,
                        [this, parameter, which] { validate(parameter, which); });
        }
    }
    txtAVoltageCurr = box(AVoltage, Which::Current);
    txtAVoltageDef = box(AVoltage, Which::Default);
    txtTurboCurr = box(Turbo, Which::Current);
    txtTurboDef = box(Turbo, Which::Default);
    txtDecimationCurr = box(Decimation, Which::Current);
    txtDecimationDef = box(Decimation, Which::Default);
    txtSampFreqCurr = box(SampFreq, Which::Current);
    txtSampFreqDef = box(SampFreq, Which::Default);
    txt3dBFreqCurr = box(Cutoff, Which::Current);
    txt3dBFreqDef = box(Cutoff, Which::Default);
    txtResolutionCurr =
        makeBox(QStringLiteral("txtResolutionCurr"),
                plainCaption(ResolutionCaption) + u' ' + plainCaption(CurrentCaption), 10,
                [this] { validateResolution(); });
    txtResolutionDef =
        makeBox(QStringLiteral("txtResolutionDef"),
                plainCaption(ResolutionCaption) + u' ' + plainCaption(DefaultCaption), 10, [] {});
    txtResolutionDef->setReadOnly(true); // always the converter's own default

    cmdStoreDefParam = new QPushButton(strings::text(780), this);
    cmdStoreDefParam->setObjectName(QStringLiteral("cmdStoreDefParam"));
    connect(cmdStoreDefParam, &QPushButton::clicked, this, &ConverterPanel::storeDefaults);

    auto* grid = new QGridLayout;
    grid->addWidget(lblParamDef, 0, 1, Qt::AlignHCenter);
    grid->addWidget(lblParamCurr, 0, 2, Qt::AlignHCenter);
    auto addRow = [grid](int row, QLabel* label, QWidget* def, QWidget* curr) {
        grid->addWidget(label, row, 0);
        grid->addWidget(def, row, 1);
        grid->addWidget(curr, row, 2);
    };
    auto pair = [this](QLineEdit* turbo, QLineEdit* decimation) {
        auto* cell = new QWidget(this);
        auto* layout = new QHBoxLayout(cell);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(turbo);
        layout->addWidget(decimation);
        return cell;
    };
    addRow(1, lblAVoltage, txtAVoltageDef, txtAVoltageCurr);
    addRow(2, lbResolution, txtResolutionDef, txtResolutionCurr);
    addRow(3, lblTurbo, pair(txtTurboDef, txtDecimationDef), pair(txtTurboCurr, txtDecimationCurr));
    addRow(4, lblSampFreq, txtSampFreqDef, txtSampFreqCurr);
    addRow(5, lbl3dBFreq, txt3dBFreqDef, txt3dBFreqCurr);
    grid->setColumnStretch(3, 1);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(cmdStoreDefParam);
}

QLineEdit* ConverterPanel::box(Parameter parameter, Which which) const {
    return m_boxes[parameter][column(which)];
}

void ConverterPanel::setTurboRowVisible(bool visible) {
    lblTurbo->setVisible(visible);
    txtTurboDef->parentWidget()->setVisible(visible);
    txtTurboCurr->parentWidget()->setVisible(visible);
}

void ConverterPanel::repairGageVoltage(PlateDevice& plate) {
    for (Which which : {Which::Default, Which::Current}) {
        if (plate.GageVoltage(which) <= 0)
            plate.SetGageVoltage(which, 0.01f);
    }
}

void ConverterPanel::fill(PlateDevice& plate) {
    for (Parameter p : {AVoltage, Turbo, Decimation, SampFreq, Cutoff})
        show(plate, p, Which::Default);
    for (Parameter p : {AVoltage, Turbo, Decimation})
        show(plate, p, Which::Current);
    txtResolutionDef->setText(QStringLiteral("20"));
    txtResolutionCurr->setText(formatNumber(plate.Resolution(), u"0"));
    for (Parameter p : {SampFreq, Cutoff})
        show(plate, p, Which::Current);
}

void ConverterPanel::show(PlateDevice& plate, Parameter parameter, Which which) {
    box(parameter, which)->setText(rules[parameter].read(plate, which));
}

void ConverterPanel::validate(Parameter parameter, Which which) {
    if (!hasPlate())
        return;
    const QString text = box(parameter, which)->text().trimmed();
    if (text.isEmpty())
        return;
    const std::optional<double> value = parseNumber(text);
    if (!value) {
        rejectInput([&](PlateDevice& plate) { show(plate, parameter, which); });
        return;
    }
    withPlate([&](PlateDevice& plate) {
        rules[parameter].write(plate, which, *value);
        show(plate, parameter, which);
        // The plate derives the other rates and frequencies from the one written.
        QList<Parameter> derived;
        switch (parameter) {
        case Turbo:
        case Decimation:
            derived = {SampFreq, Cutoff};
            break;
        case SampFreq:
            derived = {Turbo, Decimation, SampFreq, Cutoff};
            break;
        case Cutoff:
            derived = {SampFreq, Turbo, Decimation, Cutoff};
            break;
        default:
            break;
        }
        for (Parameter p : derived)
            show(plate, p, which);
    });
}

void ConverterPanel::validateResolution() {
    if (!hasPlate())
        return;
    const QString text = txtResolutionCurr->text().trimmed();
    if (text.isEmpty())
        return;
    const auto showResolution = [this](PlateDevice& plate) {
        txtResolutionCurr->setText(formatNumber(plate.Resolution(), u"0"));
    };
    const std::optional<double> value = parseNumber(text);
    if (!value) {
        rejectInput(showResolution);
        return;
    }
    withPlate([&](PlateDevice& plate) {
        const qint32 bits = std::clamp(toInt32(*value), 6, 24);
        SaveSettingLong(SettingsRoot::CurrentUser, QLatin1String(kAcquisitionKey),
                        QStringLiteral("AD Resolution"), bits);
        plate.SetResolution(bits);
        showResolution(plate);
    });
}

void ConverterPanel::storeDefaults() {
    for (Parameter p : {AVoltage, Turbo, Decimation}) {
        box(p, Which::Default)->setText(box(p, Which::Current)->text());
        validate(p, Which::Default);
    }
}

} // namespace kx
