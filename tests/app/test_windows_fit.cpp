#include "MainWindowBench.h"
#include "WindowChecks.h"
#include "app/frmSplash.h"
#include "sim/frmSimBench.h"

#include <QPointer>

namespace kx::test {
namespace {

using WindowsFit = MainWindowBench;

// The windows beside the tool dialogs (ToolDialogs checks those at work), each whole on the
// laptop's screen: the splash while the main window loads, the main window in both layouts,
// and the bench of simulated plates.
TEST_F(WindowsFit, EveryWindowBesideTheToolsLiesWholeOnTheScreen) {
    create();
    window->load();
    QPointer<frmSplash> splash = shownDialog<frmSplash>();
    ASSERT_FALSE(splash.isNull());
    {
        SCOPED_TRACE("splash");
        expectWholeOnTheScreen(*splash);
    }
    clock.advance(1000);
    {
        SCOPED_TRACE("main window");
        expectWholeOnTheScreen(*window);
    }
    enterServiceMode();
    {
        SCOPED_TRACE("main window, service layout");
        expectWholeOnTheScreen(*window);
    }
    frmSimBench bench(*sim, clock);
    bench.bringToFront();
    SCOPED_TRACE("bench");
    expectWholeOnTheScreen(bench);
}

} // namespace
} // namespace kx::test
