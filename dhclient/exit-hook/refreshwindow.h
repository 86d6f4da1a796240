#ifndef REFRESHWINDOW_H
#define REFRESHWINDOW_H

/// Makes the program's window, if one is open, read the values again. Waits up to 3 seconds for a window that is
/// still loading.
void refreshWindow();

#endif
