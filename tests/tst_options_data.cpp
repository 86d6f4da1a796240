// Checks the option definitions that the program is shipped with against its own reader, the edit tool and the DHCP
// client.

#include "dhcpoption.h"
#include "realclient.h"
#include "trial.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>

#include <memory>
#include <set>

namespace {

/// A value as a person reads it, written as the client's configuration wants it.
QString literal(const QString &type, QString value)
{
    static const QRegularExpression octets("^[0-9a-f]{1,2}(:[0-9a-f]{1,2})+$");
    const bool isText = type == "text" || (type == "string" && !octets.match(value).hasMatch());
    if (type.startsWith("array"))
        value.replace(' ', ", ");
    if (type == "domain-list")
        value.replace(' ', "\", \"");
    return isText || type == "domain-list" ? '"' + value + '"' : value;
}

} // namespace

class TestOptionsData : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QString requested;
        std::set<std::pair<uint, bool>>
            codes; // the client has a name of its own for 114, but not for what that means today
        for (const QFileInfo &file : QDir(OPTIONS_DIRECTORY).entryInfoList({"*.xml"})) {
            const CapturedErrors errors;
            try {
                options.push_back(std::make_unique<DhcpOption>(file.filePath(), nullptr));
            } catch (DhcpOption::ExceptionType) {
                QFAIL(qPrintable(file.fileName() + ": " + errors.text()));
            }
            const DhcpOption &option = *options.back();
            const QString code = QString::number(option.standardCode).rightJustified(3, '0');
            QCOMPARE(code + '-' + option.linuxName + ".xml" + errors.text(), file.fileName());
            QVERIFY2(codes.emplace(option.standardCode, option.linuxPredefined).second, qPrintable(code));
            QVERIFY2(option.names.size() == 4 && option.descriptions.size() == 4, qPrintable(option.linuxName));
            requested += option.requestedByDefault ? ' ' + option.linuxName : QString();
        }
        // What Debian's dhclient.conf requests, no more and no less.
        QCOMPARE(requested, " subnet-mask time-offset routers domain-name-servers host-name domain-name interface-mtu "
                            "broadcast-address ntp-servers netbios-name-servers netbios-scope domain-search "
                            "rfc3442-classless-static-routes");
        if (!client.obstacle.empty())
            QSKIP(client.obstacle.c_str());
    }

    /// The edit tool knows each option by number and by name. The client takes the result, and the examples, and sends
    /// the codes.
    void codesOnTheWire()
    {
        QStringList arguments;
        QStringList numbers;
        QString examples;
        QList<int> codes;
        for (const auto &option : options) {
            if (!option->linuxPredefined)
                arguments << "--add-new-option" << option->newOptionSpec(option->standardCode);
            numbers << QString("unknown-%1").arg(option->standardCode);
            arguments << "--del-request" << option->linuxName << "--add-request" << option->linuxName;
            if (!option->linuxType.contains('{')) // a record
                examples += "supersede " + option->linuxName + ' ' + literal(option->linuxType, option->example)
                            + ";\n";
            codes << int(option->standardCode);
        }
        root.write("/etc/dhcp/dhclient.conf", "request " + numbers.join(", ").toUtf8() + ";\n");
        QCOMPARE(QProcess::execute(TOOL_PATH, arguments), 0);
        const std::string edited = Posix::readFile(root.path("/etc/dhcp/dhclient.conf").toStdString(), 1 << 20).value();
        const RealClient::Heard heard = underClient(edited + examples.toStdString());
        QCOMPARE(QString::fromStdString(heard.complaints), QString());
        const std::vector<int> &sent = heard.requested.at("eth0");
        QCOMPARE(QList<int>(sent.begin(), sent.end()), codes);
    }

    /// The client knows no other name: it takes no other word of its program in a request.
    void namesOfClient()
    {
        QStringList words;
        // The linker lets a string share another's end. The client takes unknown-N for a number.
        const QRegularExpression word("(?!unknown-)(?=([a-z][a-z0-9-]+)\\0)");
        const std::string program = Posix::readFile(client.directory + "/client", 1 << 28).value();
        for (auto it = word.globalMatch(QString::fromStdString(program)); it.hasNext();)
            words << it.next().captured(1);
        for (const auto &option : options) {
            if (option->linuxPredefined)
                words.removeAll(option->linuxName);
        }
        const QString requests = "also request " + words.join(";\nalso request ") + ';';
        const QString said = QString::fromStdString(underClient(requests.toStdString()).complaints);
        const QRegularExpression line("/conf line (\\d+): ");
        for (auto it = line.globalMatch(said); it.hasNext();)
            words[it.next().captured(1).toInt() - 1].clear();
        words.removeAll({});
        QCOMPARE(words.join(' '), QString());
    }

private:
    RealClient::Heard underClient(const std::string &configuration) const
    {
        Posix::replaceFile(client.directory + "/conf", configuration, Posix::Replacement::Cached);
        return client.run(client.directory + "/conf");
    }

    const RealClient client;
    TrialRoot root; // so that no value and no stored code of the machine is read
    std::vector<std::unique_ptr<DhcpOption>> options;
};

QTEST_GUILESS_MAIN(TestOptionsData)
#include "tst_options_data.moc"
