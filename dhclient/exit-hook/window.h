#ifndef WINDOW_H
#define WINDOW_H

/// The running window of the program.
namespace Window {

/// Has it read the values anew. Nothing happens to a program that is not ready for it.
void refresh();

} // namespace Window

#endif
