#include "resources/StringTable.h"

#include <QMutex>
#include <QSet>
#include <QtGlobal>
#include <algorithm>
#include <array>
#include <string_view>

namespace kx::strings {
namespace {

struct Entry {
    int id;
    std::string_view text;
};

// The device-error texts that most dialog blocks share; a block with its own wording has it
// written out in its rows.
constexpr std::string_view Overrun =
    "Error: A/D Buffer Overrun!\n\nTry the acquisition again.\n\nIf the problem persists, the "
    "selected\nsamping frequency might be too high.\nTry selecting a lower sampling frequency.";
constexpr std::string_view Clipped = "Error: A/D Signals Clipped!\n\nTry the acquisition again.";
constexpr std::string_view ClippedCheckTrim =
    "Error: A/D Signals Clipped!\n\nMake sure nothing is in contact with the plate\nand try the "
    "acquisition again.\n\nIf the problem persists, check the bridges' trim.";
constexpr std::string_view Removal =
    "The Force Platform Has Been Disconnected!!!\n\nThis window will now Close!";
constexpr std::string_view ReadTimeout =
    "Error: Time-out while reading from the platform!\n\nIf the problem persists, close this "
    "window and\ntry unplugging and then re-plugging the platform\n\nIf the problem continues, "
    "try restarting the computer and\nmake sure no other application (including any antivirus "
    "application) is running.";
constexpr std::string_view WriteTimeout =
    "Error: Time-out while writing to the platform!\n\nIf the problem persists, close this "
    "window and\ntry unplugging and then re-plugging the platform\n\nIf the problem continues, "
    "try restarting the computer and\nmake sure no other application (including any antivirus "
    "application) is running.";
constexpr std::string_view ShortOverrun = "Overrun!";
constexpr std::string_view ShortClipping = "Clipping!";
constexpr std::string_view MatrixUnits = "N or Nm per V read by converter @ 1V Bridge Excit.";

// One row per text, ascending by number (checked at compile time below). UTF-8.
// clang-format off
constexpr std::array Table = std::to_array<Entry>({
    // frmSplash
    {1, "KX Plates Control Panel"},
    {10, "For Win32s on Windows 3.1"},
    {11, "For Windows 95"},
    {12, "For Windows 95 OSR2"},
    {13, "For Windows 98"},
    {14, "For Windows 98 SE"},
    {15, "For Windows ME"},
    {16, "For Windows"},
    {17, "For Windows NT 3.51"},
    {18, "For Windows NT 3."},
    {19, "For Windows NT 4.0"},
    {20, "For Windows NT 4."},
    {21, "For Windows 2000"},
    {22, "For Windows XP"},
    {23, "For Windows XP Pro x64"},
    {24, "For Windows Server 2003"},
    {25, "For Windows Server 2003 R2"},
    {26, "For Windows Vista"},
    {27, "For Windows Server Longhorn"},
    {28, "For Windows NT"},
    {29, "For Linux"},

    // frmMain
    {100, "KX Force Platforms Control Panel"},
    {110, "&Close"},
    {120, "&Zero Device"},
    {130, "Check &Signals"},
    {140, "&Use as Scale"},
    {150, "&Acquire Data"},
    {160, "Set USB &IDs"},
    {170, "Read &Encoder"},
    {180, "&Check Noise"},
    {190, "Ca&librate Device"},
    {200, "Devices:"},
    {210, "&Open Devices"},
    {215, "&Refresh Devices"},
    {220, "&Close Devices"},
    {300, "General Info:"},
    {310, "Serial Number:"},
    {320, "Firmware Version:"},
    {330, "Extended Device &Info..."},
    {350, "Calibration Matrix:"},
    {360, MatrixUnits},
    {400, "Calibrate Converters:"},
    {410, "S&elf"},
    {420, "&Offset"},
    {430, "&Full Scale"},
    {440, "Pseu&do"},
    {500, "Status:"},
    {510, "Device is P&olled"},
    {520, "Converters &Sleep"},
    {530, "Bac&kground Calibration"},
    {540, "Analog Section &Powered"},
    {600, "Application Counters:"},
    {610, "Alvestra"},
    {620, "Brenmoor"},
    {630, "Corvane"},
    {635, "Dunlith"},
    {640, "Last Date"},
    {650, "Set"},
    {700, "Converter Parameters:"},
    {710, "Gage Voltage (V):"},
    {720, "Turbo/Dec Rate:"},
    {730, "Resolution (bits):"},
    {740, "Sampling Freq (Hz):"},
    {750, "-3dB Frequency (Hz):"},
    {760, "Default"},
    {770, "Current"},
    {780, "Store Current values as &Default"},
    {800, "Zero Values (Converter Codes):"},
    {810, "Channel 1:"},
    {820, "Channel 2:"},
    {830, "Channel 3:"},
    {840, "Channel 4:"},
    {850, "Default"},
    {860, "Current"},
    {870, "Store Current values as &Default"},
    {900, "Updating device List ..."},
    {910, "Ready"},
    {920, " Plates Installed - "},
    {921, " HID devices"},
    {930, "A Connected KX Force Platform is not Responding\nTo Communications Attempt From The "
          "Computer!\n\nPlease Disconnect and then Reconnect all\nKX Force Platforms."},
    {950, "The service layout (status switches, converter commands, application counters, and "
          "the tools Set USB IDs, Read Encoder, Check Noise and Calibrate Device): hold Ctrl and "
          "Shift and click the middle mouse button (the wheel) on an empty part of the main "
          "window. It stays until the program closes."},
    {955, " - simulated time ×%1"},
    {960, "Settings could not be saved in %1:\n%2\n\nThey stay in effect while the program runs, "
          "and it tries again whenever a window closes."},
    {961, "Settings could not be saved in %1:\n%2\n\nThey are lost when the program ends."},

    // frmZero
    {1000, "KX Force Platforms Control Panel - Device Zero"},
    {1010, "&Acquire"},
    {1020, "&OK"},
    {1030, "&Cancel"},
    {1100, "Acquisition Parameters:"},
    {1110, "Sampling Freq (Hz):"},
    {1120, "&Duration (s):"},
    {1130, "No Platform"},
    {1200, "Zero Values:"},
    {1210, "Average"},
    {1211, "A/D Code"},
    {1212, "V"},
    {1220, "RMS Noise"},
    {1221, "A/D Codes"},
    {1222, "SNR (dB)"},
    {1230, "Channel 1:"},
    {1231, "Channel 2:"},
    {1232, "Channel 3:"},
    {1233, "Channel 4:"},
    {1900, Overrun},
    {1910, ClippedCheckTrim},
    {1920, Removal},
    {1930, ReadTimeout},
    {1940, WriteTimeout},

    // frmMeter
    {2000, "KX Force Platforms Control Panel - Channel Signals Meter"},
    {2010, "Display &ON"},
    {2020, "Display &OFF"},
    {2030, "&Close"},
    {2100, "Force Plate Information:"},
    {2110, "Serial Number:"},
    {2111, "Not Present"},
    {2120, "Firmware Version:"},
    {2130, "Gage Excitation:"},
    {2131, "The bridge excitation the meter sets while it runs (the \"Excitation (mV)\" setting "
           "of the meter, -5000 mV unless changed). The minus sign reverses the bridge supply; "
           "each channel is read per volt of excitation, so a load shows with the same sign as "
           "in the signals display. The plate's own excitation is put back when the meter "
           "closes."},
    {2200, "Fast|Medium|Slow|"},
    {2300, "Ch"},
    {2301, " VDC"},
    {2900, ShortOverrun},
    {2910, ShortClipping},
    {2920, Removal},
    {2930, ReadTimeout},
    {2940, WriteTimeout},

    // frmScale
    {3000, "KX Force Platforms Control Panel - Digital Scale"},
    {3010, "&Zero"},
    {3020, "Display &ON"},
    {3030, "Display &OFF"},
    {3040, "&Close"},
    {3100, "No Platform"},
    {3900, ShortOverrun},
    {3901, "Ready (Buffer Overrun)"},
    {3902, "Error: A/D Buffer Overrun!\n\nTry the zero again.\n\nIf the problem persists, the "
           "selected\nsamping frequency might be too high.\nTry selecting a lower sampling "
           "frequency."},
    {3910, ShortClipping},
    {3911, "Ready (Data Clipped)"},
    {3912, "Error: A/D Signals Clipped!\n\nMake sure nothing is in contact with the plate\nand "
           "try the zero again.\n\nIf the problem persists, check the bridges' trim."},
    {3920, Removal},
    {3930, ReadTimeout},
    {3931, "Ready (Timeout Occurred)"},
    {3940, WriteTimeout},
    {3941, "Ready (Timeout Occurred)"},

    // frmAcquire
    {4000, "KX Force Platforms Control Panel - Real Time Signals Display and Data Acquisition"},
    {4010, "&Cancel"},
    {4020, "Display &ON"},
    {4021, "Display &OFF"},
    {4030, "&Capture ON"},
    {4031, "&Capture OFF"},
    {4040, "&Drift ON"},
    {4041, "&Drift OFF"},
    {4050, "Test"},
    {4100, "Options:"},
    {4110, "Data Shown:"},
    {4111, "&Forces"},
    {4112, "&Voltages"},
    {4113, "&Postural"},
    {4120, "Plot Direction:"},
    {4121, "&Left to Right"},
    {4122, "&Right to Left"},
    {4130, "S&crolling"},
    {4140, "Auto&Scale"},
    {4150, "&Grids"},
    {4200, "Cursor Position:"},
    {4210, "X:"},
    {4220, "Y:"},
    {4230, "Data:"},
    {4231, "N/A"},
    {4240, "Ave:"},
    {4250, "STD:"},
    {4300, "Capture Status:"},
    {4310, "Capture is OFF"},
    {4311, "Capture is ON"},
    {4320, "Time:"},
    {4330, "Samples:"},
    {4340, "Frequency:"},
    {4400, "Signals:"},
    {4410, "Fz [N]"},
    {4411, "Mx [Nm]"},
    {4412, "My [Nm]"},
    {4420, "V1 [V]"},
    {4421, "V2 [V]"},
    {4422, "V3 [V]"},
    {4430, "Fz [N]"},
    {4431, "CoPx [m]"},
    {4432, "CoPy [m]"},
    {4500, "KX Force Platforms Control Panel - Save Captured Data File As"},
    {4510, ".txt"},
    {4520, "All Files (*.*)|*.*|Text Files (*.txt)|*.txt"},
    {4600, "Save the %1 captured rows before the window closes?"},
    {4601, "&Save"},
    {4602, "&Discard"},
    {4603, "&Later"},
    {4604, "&Keep"},
    {4610, "Discard the %1 captured rows? They cannot be brought back."},
    {4620, "A capture of %1 rows from %2 was not saved. Save it now?"},
    {4621, "The unsaved capture %1 cannot be read: %2.\n\nIt stays in its folder, set aside as "
           "\"%3\"."},
    {4622, "Saving the capture of %1 rows..."},
    {4630, "The capture was stopped: its rows cannot be written to the disk.\n\n%1\n\nThe %2 "
           "rows written until then are kept, and are saved as usual when the window closes."},
    {4631, "The capture cannot start: its rows cannot be written to the disk.\n\n%1"},
    {4900, Overrun},
    {4901, ShortOverrun},
    {4910, Clipped},
    {4911, ShortClipping},
    {4920, Removal},
    {4930, ReadTimeout},
    {4940, WriteTimeout},

    // frmProgramID
    {5000, "Program Device VID/PID/DID"},
    {5010, "&Set"},
    {5020, "&Get"},
    {5030, "&OK"},
    {5100, "EEPROM Flag:"},
    {5110, "Vendor ID:"},
    {5120, "Product ID:"},
    {5130, "Device ID:"},
    {5200, "&FP Defaults"},
    {5210, "&BP Defaults"},
    {5900, Overrun},
    {5910, Clipped},
    {5920, Removal},
    {5930, ReadTimeout},
    {5940, WriteTimeout},

    // frmEncoder
    {6000, "KX Force Platforms Control Panel - Encoder Read"},
    {6010, "&OK"},
    {6100, "Encoder value:"},
    {6900, Overrun},
    {6910, Clipped},
    {6920, Removal},
    {6930, ReadTimeout},
    {6940, WriteTimeout},

    // frmNoise
    {7000, "KX Force Platforms Control Panel - Noise Test"},
    {7010, "&Acquire"},
    {7020, "&OK"},
    {7030, "&Cancel"},
    {7100, "Test Parameters:"},
    {7110, "Frequency:"},
    {7120, "Excitation:"},
    {7130, "Sampling Freq (Hz):"},
    {7140, "Duration (s):"},
    {7150, "Excitation (V):"},
    {7160, " of "},
    {7170, "Run:"},
    {7200, "No Platform"},
    {7210, "Ready"},
    {7220, "Waiting to start test "},
    {7230, "Waiting"},
    {7231, "to start tests"},
    {7232, "to start test"},
    {7240, "Tests Done - press OK ot save and exit"},
    {7250, "Results file not saved (%1) - trying again after the next test"},
    {7251, "Results file not saved (%1) - OK saves it again or elsewhere"},
    {7252, "Picture not saved (%1)"},
    {7253, "Run log not saved (%1)"},
    {7260, "test %1 of %2, starts in %3, ends about %4"},
    {7261, "test %1 of %2, ends about %3"},
    {7300, "Results:"},
    {7310, "Exc."},
    {7311, "Freq."},
    {7312, "Ch%1 average"},
    {7313, "deviation"},
    {7314, "range"},
    {7315, "(V)"},
    {7316, "(Hz)"},
    {7317, "(codes)"},
    {7330, "suspect: "},
    {7331, "buffer overrun"},
    {7332, "clipping"},
    {7333, "load change"},
    {7334, " on channel %1"},
    {7410, "Channel "},
    {7420, "deviation (A/D codes)"},
    {7430, "Sampling Freq (Hz)"},
    {7440, "suspect test"},
    {7500, "Stop the noise test? %1 of %2 tests are done and saved."},
    {7501, "Stop the noise test? %1 of %2 tests are done, but the results file is not saved."},
    {7502, "&Stop the Test"},
    {7503, "&Keep Running"},
    {7510, "The noise test results could not be saved in %1:\n%2\n\nSave them in another place?"},
    {7511, "&Save As..."},
    {7512, "&Discard"},
    {7513, "Go &Back"},
    {7520, "The noise test results cannot be saved in %1:\n%2\n\nStart the test anyway? When it "
           "ends you will be asked for another place."},
    {7521, "&Start Anyway"},
    {7522, "&Cancel"},
    {7523, "The folder cannot be created."},
    {7524, "You may not create files in this folder."},
    {7530, "Save the Noise Test Results"},
    {7531, "Text Files (*.TXT)|*.TXT|All Files (*.*)|*.*"},
    {7532, "The results could not be saved in %1:\n%2"},
    {7600, "Noise test of plate %1, results in %2: %3 frequencies, %4 excitations, %5 channels, "
           "tests of %6 s."},
    {7601, "Test %1 of %2 (%3 V, %4 Hz) "},
    {7610, "Run finished: %1 of %2 tests done, %3 suspect."},
    {7611, "Run stopped by the user: %1 of %2 tests done."},
    {7612, "Run ended by an error of the plate: %1 of %2 tests done."},
    {7613, "The plate was disconnected: %1 of %2 tests done."},
    {7614, "The plate sent nothing for %1 s; the test ends as a read time-out."},
    {7615, "The plate's sampling frequency and excitation could not be restored: %1"},
    {7620, "Results file %1 not saved: %2"},
    {7621, "Picture %1 not saved: %2"},
    {7622, "Results saved in %1 instead."},
    {7623, "Results left unsaved: discarded by the user."},
    {7900, Overrun},
    {7910, Clipped},
    {7920, Removal},
    {7930, ReadTimeout},
    {7940, WriteTimeout},

    // frmCalibrate
    {8000, "KX Force Platforms Control Panel - Force Platform Calibration"},
    {8010, "&OK"},
    {8020, "&Cancel"},
    // The calibration's work kept safe, and the questions that guard it
    {8030, "This calibration holds work that no file keeps yet: %1.\n\nSave it before closing?"},
    {8031, "This calibration holds work that no file keeps yet: %1.\n\nSave it before opening "
           "another file?"},
    {8032, "&Save"},
    {8033, "&Discard"},
    {8034, "&Go Back"},
    {8035, "Discard this calibration work (%1)? It cannot be brought back afterwards."},
    {8036, "%1 of %2 points taken, %3 of %4 linearity steps taken"},
    {8040, "Calibration work on plate %1 was not saved in a file. It was kept safe on %2: %3.\n\n"
           "Restore it?"},
    {8041, "&Restore"},
    {8042, "Discard the kept calibration work of plate %1 (%2)? It cannot be brought back "
           "afterwards."},
    {8043, "&Keep It"},
    {8044, "The calibration work kept for plate %1 cannot be read: %2\n\nIt was moved aside to "
           "%3."},
    {8045, "The calibration work could not be kept safe in %1: %2\n\nSave the calibration file "
           "to keep it."},
    {8050, "Point %1 has no zero: unload the plate and press Get Zero first."},
    {8051, "No scaling zero: unload the plate and press Get Zero under Calibration Scaling first."},
    {8055, "The points changed after this matrix was computed: press Compute Matrix again."},
    {8056, "No matrix has been computed for the points, so none can be written to the plate."
           "\n\nClose without writing a matrix to the plate?"},
    {8057, "The points changed after the matrix was computed, so the matrix shown no longer "
           "matches them.\n\nPress Compute Matrix first, or close without writing a matrix to the "
           "plate?"},
    {8058, "&Close Without Writing"},
    {8059, "No matrix has been computed yet, and a report states one: press Compute Matrix first."},
    {8060, "The points changed after the matrix was computed: press Compute Matrix again before "
           "a report."},
    {8062, "This calibration is of plate %1, but the plate attached is %2.\n\nIts matrix is "
           "written to plate %2 only if you confirm it at OK."},
    {8064, "This calibration is of plate %1, not of the plate attached (%2).\n\nWrite its matrix "
           "to plate %2 all the same?"},
    {8065, "&Write to Plate %1"},
    {8066, "unknown (the file's name does not say)"},
    {8070, "The matrix could not be written to the plate: %1\n\nThe plate keeps its previous "
           "matrix and nothing else was written. Press OK to try again."},
    {8071, "The plate's matrix could not be read before writing the new one: %1\n\nNothing was "
           "written to the plate."},
    {8072, "The matrix could not be written to the plate: %1\n\nWriting the previous matrix back "
           "failed too (%2): the plate may hold a mix of old and new cells. Check its matrix in "
           "the main window before using it."},
    {8073, "row %1, column %2 reads %3 after %4 was written"},
    {8074, "The matrix is in the plate, but the operator records could not be written: %1\n\n"
           "Press OK to write them again."},
    {8080, "%1 per volt of bridge %2: %3 %4, known to ±%5 %4 (about 95 %)"},
    {8081, "%1 per volt of bridge %2: %3 %4"},
    {8082, "N/V"},
    {8083, "N·m/V"},
    {8084, "Fit:"},
    {8100, "Acquisitions Parameters:"},
    {8110, "Bridge Excit (V):"},
    {8120, "Sampling Freq (Hz):"},
    {8130, "Duration (s):"},
    {8200, "Operator:"},
    {8210, "Operator on File:"},
    {8220, "Operator Current:"},
    {8300, "Calibration File:"},
    {8310, "Serial # on File:"},
    {8320, "&Save"},
    {8330, "&Open..."},
    {8340, "KX Force Platforms Control Panel - Force Platform Calibration File"},
    {8350, ".cal"},
    {8360, "All Files (*.*)|*.*|Calibration Files (*.cal)|*.cal"},
    {8400, "Device Calibration:"},
    {8410, "Calibration:"},
    {8420, "&Next"},
    {8430, "Get &Zero"},
    {8440, "Get &Data"},
    {8450, "Compute &Matrix"},
    {8460, "Current point"},
    {8461, "No zero"},
    {8462, "Zero taken"},
    {8463, "Zero and data taken"},
    {8464, "Point %1: %2"},
    {8465, "CoP error 1 mm, from the fitted CoP to the mark"},
    {8466, "Does not fit"},
    {8467, "%1 mm"},
    {8470, "Not yet written to the plate: OK in the calibration dialog writes it."},
    {8471, "The plate holds this matrix."},
    {8472, "Linearity Check:"},
    {8473, "not performed"},
    {8474, "±%1"},
    {8500, "Calibration Matrix:"},
    {8510, MatrixUnits},
    {8520, "Errors:"},
    {8521, "Point"},
    {8522, "Fz [N]"},
    {8523, "X [m]"},
    {8524, "Y [m]"},
    {8530, "Fitted from %1 points on %2 channels."},
    {8531, "Point spread: %1 (condition number %2)."},
    {8532, "good"},
    {8533, "fair"},
    {8534, "poor, spread the points wider"},
    {8535, "Scatter left: Fz %1 N, Mx %2 N·m, My %3 N·m."},
    {8536, "Matrix known to ±%1 % at 95 % (k = %2, Student's t on %3 degrees of freedom)."},
    {8537, "Too few points to say how well the matrix is known: take %1 points or more (a point "
           "may repeat another's place)."},
    {8538, "Every point agrees with the fit."},
    {8539, "Point %1 does not fit: check that the weight stood on its mark and take it again."},
    {8540, "±%1 (about 95 %)"},
    {8541, "Points %1 do not fit: check that the weight stood on each mark and take them again."},
    {8542, "Each ± is an expanded uncertainty at about 95 % coverage: k = %1 (Student's t on %2 "
           "degrees of freedom) times the fit's scatter combined with %3 % of the element for the "
           "load cells' curvature, which a fit at one load cannot see."},
    {8543, "With only %1 points beyond the %2 the matrix needs, the coverage factor is large: "
           "take %3 points or more (a point may repeat another's place) for a firmer figure."},
    {8600, "Environmental Conditions:"},
    {8610, "T (°C):"},
    {8620, "RHumidity (%):"},
    {8630, "Pressure (hPa):"},
    {8640, "Zero (Converter Codes):"},
    {8641, "ch 1"},
    {8642, "ch 2"},
    {8643, "ch 3"},
    {8644, "Ave:"},
    {8645, "StDev:"},
    {8646, "Temp:"},
    {8647, "Date:"},
    {8650, "Normalized Voltage:"},
    {8651, "ch 1"},
    {8652, "ch 2"},
    {8653, "ch 3"},
    {8654, "Ave:"},
    {8655, "StDev:"},
    {8656, "Temp:"},
    {8657, "Date:"},
    {8700, "Calibration Scaling:"},
    {8710, "Get &Zero"},
    {8728, "Load &%1 kg"},
    {8729, "Unload &%1 kg"},
    {8740, "Scaling Value:"},
    {8750, "Sca&le"},
    {8757, "On File: "},
    {8758, "Suggested: "},
    {8760, "Fz [N]"},
    {8761, "Load [N]"},
    {8762, "Unload [N]"},
    {8763, "Scale"},
    {8770, "Calibration Matrix:"},
    {8771, MatrixUnits},
    {8800, "Signals:"},
    {8810, "S&crolling"},
    {8820, "&Grids"},
    {8830, "Auto&Scale"},
    {8840, "&Display ON"},
    {8841, "&Display OFF"},
    {8842, "&Bridges (V)"},
    {8843, "&Forces"},
    {8850, "Max"},
    {8851, "Min"},
    {8860, "No Plate"},
    {8861, "Ready"},
    {8862, "Acquiring Zero"},
    {8863, "Acquiring data"},
    {8864, "Computing Matrix"},
    {8870, "Please enter a valid operator code!"},
    {8871, "Please Specify the Test Environmental Conditions!"},
    {8872, "Please enter a valid Environmental Condition!"},
    {8880, "for compatibility with previously collected data\nthe bridge excitation has been set "
           "to "},
    {8890, "Unable to start Matlab"},
    {8891, "The fit engine answered, but its matrix was not used"},
    {8900, Overrun},
    {8901, ShortOverrun},
    {8910, Clipped},
    {8911, ShortClipping},
    {8920, Removal},
    {8930, ReadTimeout},
    {8940, WriteTimeout},
    {8950, "Error: Signal Too Noisy!\n\n\n\nTry the acquisition again."},
    {8951, "Error: Signal Too Noisy!\nTry the acquisition again."},
    {8960, "No channel has a positive signal at the points with data.\n\nThe matrix cannot be "
           "computed; the previous matrix is kept."},
    {8961, "The matrix of %1 channels needs data at %1 points or more; %2 have data.\n\nThe "
           "previous matrix is kept."},
    {8962, "The points with data do not determine the matrix (condition number %1).\n\nTake "
           "data at points spread over the plate; the previous matrix is kept."},
    {8963, "%1 could not be started: %2"},
    {8964, "%1 did not answer within %2 s."},
    {8965, "%1 failed: %2"},
    {8966, "%1 gave no complete result."},
    {8967, "The matrix shown is the program's own fit."},
    {8968, "%1 gave a matrix that is not the fit of these points: it differs from the program's "
           "own fit of the same data by up to %2 % of a row's largest element."},
    {8970, "The calibration file is empty."},
    {8971, "The calibration file ends inside %1."},
    {8972, "The calibration file gives %1 points: fewer than one, or more than the file holds."},
    {8973, "The calibration file's %1 has the dimensions %2 where %3 were expected."},
    {8974, "%1 is a folder, not a calibration file."},
    {8975, "The calibration file %1 cannot be opened: %2"},
    {8976, "The calibration file's %1 holds a value of unknown type %2."},
    {8977, "The calibration file has %1 unexpected bytes after its last field."},
    {8978, "The calibration file gives %1 linearity steps: a negative count, or more than the "
           "file holds."},
    {8979, "The calibration file %1 could not be written."},
    {8980, "&Report..."},
    {8981, "KX Force Platforms Control Panel - Calibration Report"},
    {8982, "PDF Files (*.pdf)|*.pdf|All Files (*.*)|*.*"},
    {8983, ".pdf"},
    {8984, "The calibration report %1 could not be written."},
    {8985, "Force Platform Calibration Certificate"},
    {8986, "Force Platform:"},
    {8987, "Serial Number:"},
    {8988, "Firmware Version:"},
    {8989, "First Zero:"},
    {8990, "Last Data Acquisition:"},
    {8991, "Gravity (m/s²):"},
    {8992, "Pressure Correction:"},
    {8993, "Fitted Matrix (each element ± its expanded uncertainty, about 95 %):"},
    {8994, "Scaled Matrix (each element ± its expanded uncertainty, about 95 %):"},
    {8995, "Points and Centre-of-Pressure Errors (plate top to scale):"},
    {8996, "Acceptance Limits:"},
    {8997, "Max Zero StdDev (converter codes):"},
    {8998, "Max Data StdDev (normalized V):"},
    {8999, "Page %1 of %2"},

    // frmPlateInfoEx
    {9000, "KX Force Platforms Control Panel - Extended Device Info"},
    {9010, "&Close"},
    {9020, "Reset &Temp"},
    {9030, "Reset &Enum"},
    {9040, "Reset &Time"},
    {9100, "General Info:"},
    {9110, "Serial Number:"},
    {9111, "No Platform"},
    {9120, "Firmware Version:"},
    {9130, "Max Device Temperature:"},
    {9140, "Current Device Temperature:"},
    {9150, "Min Device Temperature:"},
    {9160, "Number of USB Enumerations:"},
    {9170, "Approximate Total Time in Service:"},
    {9200, "Calibration/Inspection Info:"},
    {9210, "Last Calibration Date:"},
    {9211, "Operator:"},
    {9220, "Last Inspection Date:"},
    {9221, "Operator:"},
    {9900, Overrun},
    {9910, Clipped},
    {9920, Removal},
    {9930, ReadTimeout},
    {9940, WriteTimeout},
});
// clang-format on

// Strictly ascending: binary search works and no two rows share a number.
static_assert(std::ranges::adjacent_find(Table, std::ranges::greater_equal{}, &Entry::id) ==
                  Table.end(),
              "string table rows must be strictly ascending by number");

const Entry* find(int id) {
    const auto it = std::ranges::lower_bound(Table, id, {}, &Entry::id);
    return it != Table.end() && it->id == id ? &*it : nullptr;
}

} // namespace

QString text(int id) {
    if (const Entry* entry = find(id)) {
        return QString::fromUtf8(entry->text.data(), qsizetype(entry->text.size()));
    }
    // A missing number is a programming error; say so once instead of on every repaint.
    static QMutex mutex;
    static QSet<int> reported;
    const QMutexLocker lock(&mutex);
    if (!reported.contains(id)) {
        reported.insert(id);
        qWarning("kx::strings::text: no string resource %d", id);
    }
    return {};
}

bool contains(int id) {
    return find(id) != nullptr;
}

QList<int> ids() {
    QList<int> result;
    result.reserve(qsizetype(Table.size()));
    for (const Entry& entry : Table) {
        result.append(entry.id);
    }
    return result;
}

} // namespace kx::strings
