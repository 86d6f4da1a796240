#include "edittool.h"

#include "paths.h"

#include <QFile>

namespace {

constexpr char ToolPath[] = "/usr/sbin/kiro-dhclient-edit";
constexpr int PatienceMsecs = 2000;

} // namespace

EditTool::EditTool(QObject *parent)
    : QProcess(parent)
{
}

EditTool::~EditTool()
{
    setProcessState(NotRunning);
}

void EditTool::run(const QStringList &arguments)
{
    start(QFile::decodeName(Paths::resolve(ToolPath).c_str()), arguments, QIODevice::ReadWrite);
    waitForFinished(PatienceMsecs);
}
