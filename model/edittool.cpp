#include "edittool.h"

#include "qtpaths.h"

namespace {

constexpr char ToolPath[] = "/usr/sbin/kiro-dhclient-edit";
constexpr char ClientConfiguration[] = "/etc/dhcp/dhclient.conf";
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

bool EditTool::mayEdit()
{
    return Paths::isWritable(Paths::resolve(ClientConfiguration));
}

void EditTool::run(const QStringList &arguments)
{
    // Nobody reads what the tool says, and one that is left to finish must not die of a closed pipe.
    setStandardOutputFile(nullDevice());
    setStandardErrorFile(nullDevice());
    start(Paths::resolved(ToolPath), arguments, QIODevice::ReadWrite);
    waitForFinished(PatienceMsecs);
}
