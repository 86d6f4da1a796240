#ifndef DISPLAYSETUP_H
#define DISPLAYSETUP_H

#include <QtGlobal>

#include <vector>

/// Decides which Qt platform the application object is to use, and turns the abort with which Qt meets a display
/// that it cannot open into one line on standard error and exit status 1.
///
/// To be made before the application object, from whose constructor the abort comes, and to be told by opened()
/// when that has returned. Must live as long as the application object, which refers to its argument list.
class DisplaySetup
{
public:
    struct Options
    {
        bool headless;     ///< no display at all: whatever is asked for, nothing is connected to
        bool guardDisplay; ///< end with a line instead of aborting
        bool withoutOpenGl;
    };

    DisplaySetup(int argc, char **argv, Options options);

    /// The arguments to give to the application object: the process's, with the platform chosen.
    int &argc() { return m_argc; }
    char **argv() { return m_argv.data(); }

    /// Hands on what Qt had to say while the display was being opened. From then on only Qt's idle remarks on
    /// its surroundings are kept off standard error.
    void opened();

private:
    Q_DISABLE_COPY(DisplaySetup)
    void addOption(const char *name, const char *value);

    std::vector<char *> m_argv;
    int m_argc = 0;
    bool m_guarding;
};

#endif
