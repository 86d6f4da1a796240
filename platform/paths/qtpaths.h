#ifndef QTPATHS_H
#define QTPATHS_H

#include "paths.h"

#include <QFile>
#include <QString>

namespace Paths {

/// resolve() for the modules that work with Qt's strings.
inline QString resolved(const char *fixedPath)
{
    return QFile::decodeName(resolve(fixedPath).c_str());
}

} // namespace Paths

#endif
