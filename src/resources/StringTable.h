#pragma once

#include <QList>
#include <QString>

// Every caption and message of the program, fetched by number. Each window owns a block of
// one thousand numbers; within a dialog block the device-error texts sit at fixed offsets, so
// a handler can fetch `text(block + ReadTimeoutOffset)` without knowing the dialog.
//
// Captions keep their "&" mnemonic marker and messages their "\n" line breaks.
namespace kx::strings {

// The text of `id`, or an empty string (with one warning per unknown number) when the table
// has none.
QString text(int id);
bool contains(int id);
// Every number in the table, ascending.
QList<int> ids();

inline constexpr int MainBlock = 0;
inline constexpr int ZeroBlock = 1000;
inline constexpr int MeterBlock = 2000;
inline constexpr int ScaleBlock = 3000;
inline constexpr int AcquireBlock = 4000;
inline constexpr int ProgramIdBlock = 5000;
inline constexpr int EncoderBlock = 6000;
inline constexpr int NoiseBlock = 7000;
inline constexpr int CalibrateBlock = 8000;
inline constexpr int PlateInfoExBlock = 9000;

// Device-error texts within a dialog block.
inline constexpr int OverrunOffset = 900;
inline constexpr int ClippingOffset = 910;
inline constexpr int RemovalOffset = 920;
inline constexpr int ReadTimeoutOffset = 930;
inline constexpr int WriteTimeoutOffset = 940;

// The window title of the main window; also the caption of every device-error message box.
inline constexpr int ApplicationTitle = 100;

// Numbers given to texts that came without one. Look here before adding a literal to a dialog.
namespace mainwindow {
inline constexpr int SplashLinux = 29;        // "For Linux"; the kernel version follows
inline constexpr int RefreshDevices = 215;    // cmdDevRefresh
inline constexpr int ServiceLayoutHint = 950; // how to reach the service layout
inline constexpr int TimeSpeed = 955;         // after the title while time runs faster, "%1" ×
// Settings or profile values that could not be written: %1 the file, %2 why.
inline constexpr int SettingsNotSaved = 960;
inline constexpr int SettingsLost = 961; // ... when the program ends
} // namespace mainwindow

namespace meter {
inline constexpr int ChannelPrefix = 2300;  // "Ch", then the channel number and " "
inline constexpr int VoltsSuffix = 2301;    // " VDC" after the mean voltage
inline constexpr int ExcitationHint = 2131; // lblExcV's tip: why the excitation is negative
} // namespace meter

namespace acquire {
inline constexpr int SignalForces = 4111;     // optSignal(0)
inline constexpr int SignalVoltages = 4112;   // optSignal(1)
inline constexpr int SignalPostural = 4113;   // optSignal(2)
inline constexpr int NotAvailable = 4231;     // lblData when the cursor has no data
inline constexpr int CaptureTime = 4320;      // caption of lblTime
inline constexpr int CaptureSamples = 4330;   // caption of lblSample
inline constexpr int CaptureFrequency = 4340; // caption of lblFreq
// Captured rows that are not saved: leaving the window, and the offer of a capture a crash left
inline constexpr int SaveBeforeClosing = 4600;
inline constexpr int Save = 4601;
inline constexpr int Discard = 4602;
inline constexpr int Later = 4603;
inline constexpr int Keep = 4604;
inline constexpr int ConfirmDiscard = 4610;
inline constexpr int UnsavedCapture = 4620;
inline constexpr int UnsavedCaptureUnreadable = 4621;
inline constexpr int SavingCapture = 4622;     // progress of the offered capture's save
inline constexpr int JournalFailed = 4630;     // the disk refused rows: the capture stops
inline constexpr int JournalNotCreated = 4631; // the capture cannot start
} // namespace acquire

namespace noise {
inline constexpr int Title = 7000;
inline constexpr int TestParamFrame = 7100; // frmTestParam
inline constexpr int TitleF = 7110;         // lblTitleF, beside lblF
inline constexpr int TitleV = 7120;         // lblTitleV, beside lblV
inline constexpr int SampFreq = 7130;       // lblSampFreq, beside lblFreqTxt
inline constexpr int Duration = 7140;       // lblDuration, beside lblDurationTxt
inline constexpr int ExcTitke = 7150;       // lblExcTitke, beside lblExcitationTxt
inline constexpr int Of = 7160;             // " of " in lblF and lblV
inline constexpr int Run = 7170;            // lblRun, beside lblRunTxt: the run as a whole
inline constexpr int NoPlatform = 7200;
inline constexpr int Ready = 7210;
inline constexpr int WaitingToStart = 7220; // status while a test is prepared
inline constexpr int Waiting = 7230;        // the countdown: "Waiting" + " 3542 s " + ...
inline constexpr int ToStartTests = 7231;   // ... before the first test
inline constexpr int ToStartTest = 7232;    // ... before the others
inline constexpr int TestsDone = 7240;      // status at the end of a run
inline constexpr int FileNotSaved = 7250;   // while the result file cannot be written: %1 why
inline constexpr int FileNotSavedOk = 7251; // ... once the run is over
inline constexpr int PictureNotSaved = 7252;
inline constexpr int LogNotSaved = 7253;
inline constexpr int RunWaiting = 7260;   // lblRunTxt: test, tests, h:mm:ss to go, end time
inline constexpr int RunMeasuring = 7261; // lblRunTxt: test, tests, end time
inline constexpr int ResultsFrame = 7300; // frmResults
// lblHeading: each column's name and unit above lstResults.
inline constexpr int HeadExcitation = 7310;
inline constexpr int HeadFrequency = 7311;
inline constexpr int HeadAverage = 7312; // %1 the channel
inline constexpr int HeadDeviation = 7313;
inline constexpr int HeadRange = 7314;
inline constexpr int HeadVolts = 7315;
inline constexpr int HeadHertz = 7316;
inline constexpr int HeadCodes = 7317;
// A suspect test's line: "suspect: " and its reasons.
inline constexpr int Suspect = 7330;
inline constexpr int SuspectOverrun = 7331;
inline constexpr int SuspectClipping = 7332;
inline constexpr int SuspectLoadChange = 7333;
inline constexpr int OnChannel = 7334;      // after the load change, in the log
inline constexpr int ChartChannel = 7410;   // picNoise: "Channel " + number
inline constexpr int ChartDeviation = 7420; // picNoise: what is plotted
inline constexpr int ChartFrequency = 7430; // picNoise: the horizontal axis
inline constexpr int ChartSuspect = 7440;   // picNoise: the ring around a suspect test
// Questions: stopping a run, leaving unsaved results, a results folder that cannot be used.
inline constexpr int StopQuestion = 7500; // %1 tests done of %2
inline constexpr int StopQuestionUnsaved = 7501;
inline constexpr int StopRun = 7502;
inline constexpr int KeepRunning = 7503;
inline constexpr int UnsavedQuestion = 7510; // %1 the file, %2 why
inline constexpr int SaveElsewhere = 7511;
inline constexpr int DiscardResults = 7512;
inline constexpr int GoBack = 7513;
inline constexpr int FolderQuestion = 7520; // %1 the folder, %2 why
inline constexpr int StartAnyway = 7521;
inline constexpr int DoNotStart = 7522;
inline constexpr int FolderNotMade = 7523;
inline constexpr int FolderNotWritable = 7524;
inline constexpr int SaveAsTitle = 7530;
inline constexpr int SaveAsFilter = 7531;
inline constexpr int SaveAsFailed = 7532; // %1 the file, %2 why
// The run's log beside the result file.
inline constexpr int LogStart = 7600;
inline constexpr int LogTest = 7601; // "Test 7 of 100 (0.500 V, 64.000 Hz) ", then the marks
inline constexpr int LogFinished = 7610;
inline constexpr int LogStopped = 7611;
inline constexpr int LogTimedOut = 7612;
inline constexpr int LogRemoved = 7613;
inline constexpr int LogSilent = 7614;
inline constexpr int LogNotRestored = 7615;
inline constexpr int LogResultsNotSaved = 7620;
inline constexpr int LogPictureNotSaved = 7621;
inline constexpr int LogSavedElsewhere = 7622;
inline constexpr int LogDiscarded = 7623;
} // namespace noise

namespace calibrate {
inline constexpr int Title = 8000;
inline constexpr int Ok = 8010;
inline constexpr int Cancel = 8020;

// Leaving with work no file keeps: Save, Discard or Go Back; a discard is asked once more.
inline constexpr int LeaveQuestion = 8030; // %1 the work (WorkSummary)
inline constexpr int OpenQuestion = 8031;  // %1 the work
inline constexpr int ChoiceSave = 8032;
inline constexpr int ChoiceDiscard = 8033;
inline constexpr int ChoiceGoBack = 8034;
inline constexpr int DiscardConfirm = 8035; // %1 the work
inline constexpr int WorkSummary = 8036;    // %1 of %2 points, %3 of %4 steps
// The work kept safe for a plate, offered back when its calibration opens again.
inline constexpr int RecoveryOffer = 8040; // %1 serial, %2 when, %3 the work
inline constexpr int ChoiceRestore = 8041;
inline constexpr int RecoveryDiscardConfirm = 8042; // %1 serial, %2 the work
inline constexpr int ChoiceKeep = 8043;
inline constexpr int RecoveryUnreadable = 8044; // %1 serial, %2 why, %3 where it went
inline constexpr int RecoveryNotKept = 8045;    // %1 the folder, %2 why
// Acquisitions refused for want of a zero: status texts.
inline constexpr int NeedPointZero = 8050; // %1 the point's number
inline constexpr int NeedScalingZero = 8051;
// A matrix that no longer matches the points, or none.
inline constexpr int FitStale = 8055;
inline constexpr int OkWithoutFit = 8056;
inline constexpr int OkWithStaleFit = 8057;
inline constexpr int ChoiceCloseWithoutWriting = 8058;
inline constexpr int ReportWithoutFit = 8059;
inline constexpr int ReportWithStaleFit = 8060;
// A calibration of another plate than the one attached.
inline constexpr int OtherPlateOpened = 8062;   // %1 the calibration's plate, %2 the attached one
inline constexpr int OtherPlateCommit = 8064;   // the same
inline constexpr int ChoiceWriteToPlate = 8065; // %1 the attached plate
inline constexpr int UnknownPlate = 8066;
// Writing the matrix into the plate.
inline constexpr int CommitFailed = 8070;        // %1 why
inline constexpr int CommitOldUnreadable = 8071; // %1 why
inline constexpr int CommitMixed = 8072;         // %1 why, %2 why the old cells did not go back
inline constexpr int CommitMismatch = 8073;      // %1 row, %2 column, %3 read, %4 written
inline constexpr int CommitRecordsFailed = 8074; // %1 why
// A matrix cell's tooltip: %1 Fz, Mx or My, %2 bridge, %3 value, %4 units, %5 uncertainty.
inline constexpr int CellTip = 8080;
inline constexpr int CellTipWithoutUncertainty = 8081;
inline constexpr int UnitsPerVoltForce = 8082;
inline constexpr int UnitsPerVoltMoment = 8083;
inline constexpr int FitFrame = 8084; // frmFitQuality, around lblFitQuality

inline constexpr int AcqParamFrame = 8100; // frmAcqParam
inline constexpr int Excitation = 8110;    // lblExcitation
inline constexpr int SampFreq = 8120;      // lblSampFreq
inline constexpr int Duration = 8130;      // lblDuration

inline constexpr int OperatorFrame = 8200; // frmOperator
inline constexpr int OpPast = 8210;        // lblOpPast
inline constexpr int OpNow = 8220;         // lblOpNow

inline constexpr int FileFrame = 8300;     // frmFile
inline constexpr int SerialNumFile = 8310; // lblSerialNumFile
inline constexpr int FileSave = 8320;      // cmdFileSave
inline constexpr int FileName = 8330;      // cmdFileName
inline constexpr int FileDialogTitle = 8340;
inline constexpr int FileDialogExtension = 8350;
inline constexpr int FileDialogFilter = 8360; // "|"-separated pairs, as 4520

inline constexpr int CalibrationFrame = 8400; // frmCalibration
inline constexpr int CommandsFrame = 8410;    // frmCommands
inline constexpr int Next = 8420;             // cmdNext
inline constexpr int Zero = 8430;             // cmdZero
inline constexpr int Data = 8440;             // cmdData
inline constexpr int Matrix = 8450;           // cmdMatrix

inline constexpr int MatrixFrame = 8500;       // frmCalibrationMatrix
inline constexpr int MatrixCaption = 8510;     // lblMatrixCaption
inline constexpr int ErrorsFrame = 8520;       // frmCalibrationErrors
inline constexpr int ErrorsColumnPoint = 8521; // flxgrdErrors heads, 8521..8524
inline constexpr int ErrorsColumnFz = 8522;
inline constexpr int ErrorsColumnX = 8523;
inline constexpr int ErrorsColumnY = 8524;

inline constexpr int ConditionsFrame = 8600; // frmConditions
inline constexpr int CTemp = 8610;           // lblCTemp
inline constexpr int CRH = 8620;             // lblCRH
inline constexpr int CPres = 8630;           // lblCPres
inline constexpr int ZeroFrame = 8640;       // frmZero
inline constexpr int ZeroCh = 8641;          // lblZeroCh(i) = ZeroCh + i, i = 0..2
inline constexpr int ZeroAverage = 8644;     // lblZeroAverage
inline constexpr int ZeroSDev = 8645;        // lblZeroSDev
inline constexpr int ZeroT = 8646;           // lblZeroT
inline constexpr int ZeroDate = 8647;        // lblZeroDate
inline constexpr int DataFrame = 8650;       // frmData
inline constexpr int DataCh = 8651;          // lblDataCh(i) = DataCh + i, i = 0..2
inline constexpr int DataAverage = 8654;     // lblDataAverage
inline constexpr int DataSDev = 8655;        // lblDataSDev
inline constexpr int DataT = 8656;           // lblDataT
inline constexpr int DataDate = 8657;        // lblDataDate

inline constexpr int ScalingFrame = 8700;      // frmScaling
inline constexpr int ScaleZero = 8710;         // cmdScaleZero
inline constexpr int LoadStep = 8728;          // cmdScaleLoad of a loading step, %1 kilograms
inline constexpr int UnloadStep = 8729;        // cmdScaleLoad of an unloading step, %1 kilograms
inline constexpr int ScalingValueFrame = 8740; // frmScalingValue
inline constexpr int Scale = 8750;             // cmdScale
inline constexpr int ScaleStored = 8757;       // "On File: " in lblScaleStored
inline constexpr int ScaleSuggested = 8758;    // "Suggested: " in lblScaleSuggested
inline constexpr int LinearityColumnFz = 8760; // flxgrdLinearity heads, 8760..8763
inline constexpr int LinearityColumnLoad = 8761;
inline constexpr int LinearityColumnUnload = 8762;
inline constexpr int LinearityColumnScale = 8763;
inline constexpr int ScaledMatrixFrame = 8770;   // frmScaledMatrix
inline constexpr int ScaledMatrixCaption = 8771; // lblScaledMatrixCaption

inline constexpr int SignalsFrame = 8800; // fraSignals
inline constexpr int Scroll = 8810;       // chkScroll
inline constexpr int Grid = 8820;         // chkGrid
inline constexpr int AutoScale = 8830;    // chkAutoScale
inline constexpr int DisplayOn = 8840;    // cmdDisplay
inline constexpr int DisplayOff = 8841;
inline constexpr int Max = 8850; // lblMax
inline constexpr int Min = 8851; // lblMin

inline constexpr int StatusNoPlate = 8860;
inline constexpr int StatusReady = 8861;
inline constexpr int StatusAcquiringZero = 8862;
inline constexpr int StatusAcquiringData = 8863;
inline constexpr int StatusComputingMatrix = 8864;

inline constexpr int InvalidOperator = 8870;
inline constexpr int MissingConditions = 8871;
inline constexpr int InvalidCondition = 8872;
inline constexpr int ExcitationNote = 8880; // the excitation value follows
inline constexpr int EngineUnavailable = 8890;
// The heading when the outside engine answered with a matrix that is not the fit of the points.
inline constexpr int EngineRefused = 8891;

// Refusals of the matrix fit; the previous matrix stays.
inline constexpr int FitNoSignal = 8960;
inline constexpr int FitTooFewPoints = 8961;   // %1 channels, %2 points with data
inline constexpr int FitIllConditioned = 8962; // %1 condition number
// The outside engine's failures, after EngineUnavailable; %1 is its program.
inline constexpr int EngineNotStarted = 8963; // %2 the reason
inline constexpr int EngineTimedOut = 8964;   // %2 seconds
inline constexpr int EngineFailed = 8965;     // %2 what it said on its error output
inline constexpr int EngineNoResult = 8966;
inline constexpr int EngineBuiltInUsed = 8967;
inline constexpr int EngineDisagrees = 8968; // %2 the largest difference, percent of its row

// Calibration files that cannot be read; %1 names the part of the record.
inline constexpr int FileEmpty = 8970;
inline constexpr int FileTruncated = 8971;
inline constexpr int FileBadPointCount = 8972; // %1 the count
inline constexpr int FileBadArray = 8973;      // %1 the field, %2 its header, %3 expected
inline constexpr int FileIsFolder = 8974;      // %1 the path
inline constexpr int FileCannotOpen = 8975;    // %1 the path, %2 the reason
inline constexpr int FileBadVariant = 8976;    // %1 the field, %2 the type tag
inline constexpr int FileTrailingBytes = 8977; // %1 the count
inline constexpr int FileBadStepCount = 8978;  // %1 the count
inline constexpr int FileNotSaved = 8979;      // %1 the path

// The calibration report: its button and file dialog, and the certificate's own texts.
inline constexpr int Report = 8980; // cmdReport
inline constexpr int ReportDialogTitle = 8981;
inline constexpr int ReportDialogFilter = 8982;
inline constexpr int ReportDialogExtension = 8983;
inline constexpr int ReportNotWritten = 8984; // %1 the path
inline constexpr int ReportTitle = 8985;
inline constexpr int ReportPlate = 8986;
inline constexpr int ReportSerial = 8987;
inline constexpr int ReportFirmware = 8988;
inline constexpr int ReportFirstZero = 8989;
inline constexpr int ReportLastData = 8990;
inline constexpr int ReportGravity = 8991;
inline constexpr int ReportPressureCorrection = 8992;
inline constexpr int ReportFittedMatrix = 8993;
inline constexpr int ReportScaledMatrix = 8994;
inline constexpr int ReportPicture = 8995;
inline constexpr int ReportLimits = 8996;
inline constexpr int ReportMaxZeroStdDev = 8997;
inline constexpr int ReportMaxDataStdDev = 8998;
inline constexpr int ReportPageNumbers = 8999; // %1 this page, %2 the count

// The plate picture's legend and tooltip.
inline constexpr int PictureCurrent = 8460;
inline constexpr int PictureNoZero = 8461;
inline constexpr int PictureZero = 8462;
inline constexpr int PictureData = 8463;
inline constexpr int PicturePoint = 8464;       // %1 the point's number, %2 its state
inline constexpr int PictureArrow = 8465;       // beside the length of a 1 mm error arrow
inline constexpr int PictureDoesNotFit = 8466;  // the ring of a point the fit flags
inline constexpr int PictureArrowLength = 8467; // %1 the true error, mm, of a shortened arrow

// The report's statements of what was and was not done when it was made.
inline constexpr int ReportScaledNotWritten = 8470;
inline constexpr int ReportScaledHeld = 8471;
inline constexpr int ReportLinearity = 8472;
inline constexpr int ReportNotPerformed = 8473;
inline constexpr int ReportElementUncertainty = 8474; // a matrix cell's ±, %1

// The fit's findings in words, below the matrix.
inline constexpr int FitPoints = 8530; // %1 points, %2 channels
inline constexpr int FitSpread = 8531; // %1 one of the three below, %2 condition number
inline constexpr int FitSpreadGood = 8532;
inline constexpr int FitSpreadFair = 8533;
inline constexpr int FitSpreadPoor = 8534;
inline constexpr int FitScatter = 8535;       // %1 Fz, %2 Mx, %3 My residual RMS
inline constexpr int FitUncertainty = 8536;   // %1 percent, %2 coverage factor, %3 dof
inline constexpr int FitNoUncertainty = 8537; // %1 the points needed
inline constexpr int FitAllPointsFit = 8538;
inline constexpr int FitPointDoesNotFit = 8539; // %1 the point
inline constexpr int FitPointsDoNotFit = 8541;  // %1 the points
inline constexpr int ElementUncertainty = 8540; // tooltip of a matrix cell, %1
// What the report's ± values are: %1 coverage factor, %2 dof, %3 the cells' share in percent.
inline constexpr int FitExpandedUncertainty = 8542;
inline constexpr int FitFewDegrees = 8543; // %1 dof, %2 channels, %3 the points needed

inline constexpr int SignalBridges = 8842; // optSignal(0)
inline constexpr int SignalForces = 8843;  // optSignal(1)

inline constexpr int TooNoisy = 8950;        // point mode
inline constexpr int TooNoisyScaling = 8951; // scaling panel: plain two-line text
} // namespace calibrate

} // namespace kx::strings
