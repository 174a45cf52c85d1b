#pragma once

using WebKitWebView = struct _WebKitWebView;

namespace qorix::gtk {

// The faults of the web engine, WebKitGTK, that the library works around. All were seen in version
// 2.50.6. The tests that are named fail without the work around the fault.
//
// 1. Asked to draw a part of its view, the engine draws the part as far from the other end, top for
//    bottom: below. topBannerFollowsItsHost and others in tests/presentation/gtk/PlacementTest.cpp.
//
// 2. A view loses its picture together with its native window, which happens when the host moves it
//    to another window, and a page that does not change is not painted again: below.
//    aBannerGoesWithAHostThatIsReparented in tests/presentation/gtk/PlacementTest.cpp.
//
// 3. A script that the application has the engine evaluate counts as an act of the user: our module
//    evaluates it instead, webprocess/WebProcess.cpp.
//    beingAskedIsNoActOfTheUser in tests/webview/gtk/HostilePageTest.cpp.
//
// 4. In a frame that runs no scripts no listener of any script is called, not even in a world of
//    the application's own: webprocess/ScriptlessFrames.cpp.
//    All of tests/webview/gtk/ScriptlessFrameTest.cpp.
//
// 5. Told to use a sandbox that it cannot make, the engine ends the host: PageIsolation.cpp.
//    withoutTheToolsOfTheSandboxPagesAreShownAllTheSame in tests/webview/gtk/PageIsolationTest.cpp.
//
// 6. Asked for its page, a web view whose process has ended starts another one with an empty page:
//    ScriptEvaluation.cpp.
//    aCrashedWebProcessIsOneLogLineAndABlankBanner in tests/webview/gtk/HostilePageTest.cpp.

/// Works around the first two of these faults in `webView`. To be called once.
void correctPainting(WebKitWebView* webView);

}  // namespace qorix::gtk
