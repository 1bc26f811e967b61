// Closing a window the way a window manager does (kept apart from the tests: Xlib's macros
// clash with GoogleTest's names).
#pragma once

// Sends WM_PROTOCOLS / WM_DELETE_WINDOW to the window on $DISPLAY; false if that failed.
bool SendDeleteWindow(unsigned long window);
