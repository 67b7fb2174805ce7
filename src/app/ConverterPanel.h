#pragma once

#include "app/PlatePanel.h"
#include "device/PlateTypes.h"

#include <array>

class QLabel;
class QLineEdit;
class QPushButton;

namespace kx {

// "Converter Parameters:": the plate's gage voltage, turbo and decimation rates, resolution,
// sampling and -3 dB frequencies, each as the value in force ("Current") and the power-on
// default ("Default"). A confirmed edit is clamped to the converter's limits, written, and
// the values the plate derived from it are read back, so the boxes show what the plate holds.
class ConverterPanel : public PlatePanel {
    Q_OBJECT
public:
    ConverterPanel(Prompt& prompt, const SelectedPlate& plate, QWidget* parent = nullptr);

    // A stored gage voltage of 0 or less is replaced by 0.01, default first.
    void repairGageVoltage(PlateDevice& plate);
    // Every box from the plate, default column first.
    void fill(PlateDevice& plate);
    // The turbo / decimation row belongs to the service layout.
    void setTurboRowVisible(bool visible);

    QLabel* lblAVoltage;
    QLabel* lblTurbo;
    QLabel* lbResolution;
    QLabel* lblSampFreq;
    QLabel* lbl3dBFreq;
    QLabel* lblParamDef;
    QLabel* lblParamCurr;
    QLineEdit* txtAVoltageDef;
    QLineEdit* txtAVoltageCurr;
    QLineEdit* txtTurboDef;
    QLineEdit* txtTurboCurr;
    QLineEdit* txtDecimationDef;
    QLineEdit* txtDecimationCurr;
    QLineEdit* txtResolutionDef;
    QLineEdit* txtResolutionCurr;
    QLineEdit* txtSampFreqDef;
    QLineEdit* txtSampFreqCurr;
    QLineEdit* txt3dBFreqDef;
    QLineEdit* txt3dBFreqCurr;
    QPushButton* cmdStoreDefParam;

private:
    enum Parameter { AVoltage, Turbo, Decimation, SampFreq, Cutoff, ParameterCount };

    QLineEdit* box(Parameter parameter, Which which) const;
    void show(PlateDevice& plate, Parameter parameter, Which which);
    void validate(Parameter parameter, Which which);
    void validateResolution();
    void storeDefaults();

    std::array<std::array<QLineEdit*, 2>, ParameterCount>
        m_boxes{}; // [parameter][Current, Default]
};

} // namespace kx
