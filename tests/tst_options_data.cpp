// Checks the option definitions that the program is shipped with against its own reader, the edit tool and the DHCP
// client.

#include "dhcpoption.h"
#include "realclient.h"
#include "trial.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include <memory>

namespace {

/// A value as a person reads it, written as the client's configuration wants it; empty for a record.
QString literal(const QString &type, const QString &value)
{
    static const QRegularExpression octets(QStringLiteral("^[0-9a-f]{1,2}(:[0-9a-f]{1,2})+$"));
    if (type.contains(QLatin1Char('{')))
        return QString();
    if (type == QLatin1String("domain-list"))
        return QLatin1Char('"') % QString(value).replace(QLatin1Char(' '), QLatin1String("\", \"")) % QLatin1Char('"');
    if (type == QLatin1String("text") || (type == QLatin1String("string") && !octets.match(value).hasMatch()))
        return QLatin1Char('"') % value % QLatin1Char('"');
    return type.startsWith(QLatin1String("array")) ? QString(value).replace(QLatin1Char(' '), QLatin1Char(',')) : value;
}

RealClient::Heard underClient(const RealClient &client, const std::string &configuration)
{
    Posix::replaceFile(client.directory + "/conf", configuration, Posix::Replacement::Cached);
    return client.run(client.directory + "/conf");
}

} // namespace

class TestOptionsData : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const QDir directory(QStringLiteral(OPTIONS_DIRECTORY));
        files = directory.entryList({QStringLiteral("*.xml")}, QDir::Files, QDir::Name);
        QVERIFY(!files.isEmpty());
        const CapturedErrors errors;
        for (const QString &file : qAsConst(files)) {
            try {
                options.push_back(std::make_unique<DhcpOption>(directory.filePath(file), nullptr));
            } catch (DhcpOption::ExceptionType) {
                QFAIL(qPrintable(errors.text()));
            }
        }
        QCOMPARE(errors.text(), QString());
    }

    void definitions()
    {
        const QRegularExpression name(QStringLiteral("^[a-z][a-z0-9]*(-[a-z0-9]+)*$"));
        // The types of dhcp-options(5) under which a custom option can be declared. The reader lets more words pass.
        const QRegularExpression declarable(QStringLiteral(
            "^((array of )?(boolean|((un)?signed )?integer (8|16|32)|ip-address)|text|string|domain-list)$"));
        // QString::simplified would also take the no-break spaces that French typography wants.
        const QRegularExpression stray(QStringLiteral("^ | $|  |[\\t\\r\\n]"));
        QSet<QPair<uint, bool>> codes; // the client has a name of its own for 114, but not for what that means today
        for (size_t i = 0; i < options.size(); ++i) {
            const DhcpOption &option = *options.at(i);
            const QString code = QStringLiteral("%1").arg(option.standardCode, 3, 10, QLatin1Char('0'));
            QCOMPARE(files.at(int(i)), code % QLatin1Char('-') % option.linuxName % QLatin1String(".xml"));
            const QByteArray file = files.at(int(i)).toUtf8();
            const auto check = [&file](bool holds, const char *what) {
                if (!holds)
                    QTest::qFail(QByteArray(file + ": " + what).constData(), __FILE__, __LINE__);
            };
            // The client refuses 0 and 255, and sends anything beyond without its upper bits.
            check(option.standardCode >= 1 && option.standardCode <= 254, "code");
            check(!codes.contains({option.standardCode, option.linuxPredefined}), "code is used twice");
            codes << qMakePair(uint(option.standardCode), option.linuxPredefined);
            check(name.match(option.linuxName).hasMatch(), "linux-name");
            check(option.linuxPredefined || declarable.match(option.linuxType).hasMatch(), "linux-type");
            check(!option.linuxPredefined || option.standardOption, "predefined and not standard");
            check(option.windowsName.isEmpty() || option.windowsType != QLatin1String("Unknown"), "windows-type");
            check(option.dhcpClass != AlwaysOff || !option.requestedByDefault, "requested and always off");
            check(option.dhcpClass != AlwaysOn || option.requestedByDefault, "always on and not requested");
            check(!option.example.isEmpty(), "no example");
            QStringList texts = {option.windowsName, option.windowsType, option.linuxType, option.example};
            for (const char *language : {"en", "de", "fr", "es"}) {
                const QString key = QString::fromLatin1(language);
                check(!option.names.value(key).isEmpty(), "no name");
                check(option.descriptions.value(key).endsWith(QLatin1Char('.')), "no description, or no sentence");
                texts << option.names.value(key) << option.descriptions.value(key);
            }
            check(option.names.size() == 4 && option.descriptions.size() == 4, "another language");
            check(texts.filter(stray).isEmpty(), "stray white space");
        }
    }

    /// With the definitions' defaults the program asks for what Debian's dhclient.conf asks for, no more and no less.
    void defaults()
    {
        QStringList requested;
        for (const auto &option : options) {
            if (option->requestedByDefault)
                requested << option->linuxName;
        }
        requested.sort();
        QCOMPARE(requested.join(QLatin1Char(' ')),
                 QStringLiteral(
                     "broadcast-address domain-name domain-name-servers domain-search host-name interface-mtu "
                     "netbios-name-servers netbios-scope ntp-servers rfc3442-classless-static-routes routers "
                     "subnet-mask time-offset"));
    }

    /// The edit tool knows each predefined option by name and by number.
    void editor()
    {
        QStringList arguments;
        QByteArray list = "request unknown-254";
        for (const auto &option : options) {
            if (!option->linuxPredefined)
                continue;
            arguments << QStringLiteral("--del-request") << option->linuxName;
            list += ", unknown-" + QByteArray::number(option->standardCode);
        }
        const QString path = QStringLiteral("/etc/dhcp/dhclient.conf");
        root.write(path, list + ";\n");
        QCOMPARE(QProcess::execute(QStringLiteral(TOOL_PATH), arguments), 0);
        QFile file(root.path(path));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("request unknown-254;\n"));
    }

    /// The predefined names are all that the client knows: those words in its program that it takes in a request.
    void namesOfClient()
    {
        const RealClient client;
        if (!client.obstacle.empty())
            QSKIP(client.obstacle.c_str());
        QFile program(QString::fromStdString(client.directory + "/client"));
        QVERIFY(program.open(QIODevice::ReadOnly));
        const QByteArray content = program.readAll();
        QStringList words;
        for (const auto &option : options)
            words << option->linuxName;
        const QRegularExpression word(QStringLiteral("[a-z0-9-]+(?=\\x00)"));
        for (auto it = word.globalMatch(QString::fromLatin1(content.constData(), content.size())); it.hasNext();) {
            const QString found = it.next().captured();
            for (int i = 0; i < found.size() - 1; ++i) { // the linker lets a string share the end of another
                if (found.at(i) >= QLatin1Char('a'))
                    words << found.mid(i);
            }
        }
        words = words.filter(QRegularExpression(QStringLiteral("^(?!unknown-)"))); // it knows those as numbers
        words.removeDuplicates();
        std::string configuration;
        for (const QString &name : qAsConst(words))
            configuration += "also request " + name.toStdString() + ";\n";
        const QString said = QString::fromStdString(underClient(client, configuration).complaints);
        QSet<QString> known(words.begin(), words.end());
        const QRegularExpression line(QStringLiteral("/conf line (\\d+): "));
        for (auto it = line.globalMatch(said); it.hasNext();)
            known.remove(words.at(it.next().captured(1).toInt() - 1));
        for (const auto &option : options)
            QVERIFY2(known.remove(option->linuxName) == option->linuxPredefined, qPrintable(option->linuxName));
        QCOMPARE(QStringList(known.values()).join(QLatin1Char(' ')), QString());
    }

    /// The client takes the declarations and the examples, and sends the codes.
    void codesOnTheWire()
    {
        const RealClient client;
        if (!client.obstacle.empty())
            QSKIP(client.obstacle.c_str());
        QVERIFY(!underClient(client, "supersede subnet-mask \"a\";\n").complaints.empty());
        QString declarations;
        QString examples;
        QString list;
        QList<int> codes;
        for (const auto &option : options) {
            if (!option->linuxPredefined)
                declarations += QStringLiteral("option %1 code %2 = %3;\n")
                                    .arg(option->linuxName)
                                    .arg(option->standardCode)
                                    .arg(option->linuxType);
            const QString example = literal(option->linuxType, option->example);
            if (!example.isEmpty())
                examples += QStringLiteral("supersede %1 %2;\n").arg(option->linuxName, example);
            list += (list.isEmpty() ? QLatin1String("request ") : QLatin1String(", ")) % option->linuxName;
            codes << int(option->standardCode);
        }
        list += QLatin1Char(';');
        const auto heard = underClient(client, QString(declarations % examples % list).toStdString());
        QCOMPARE(QString::fromStdString(heard.complaints), QString());
        const std::vector<int> &sent = heard.requested.at("eth0");
        QCOMPARE(QList<int>(sent.begin(), sent.end()), codes);
    }

private:
    TrialRoot root; // so that no value and no stored code of the machine is read
    QStringList files;
    std::vector<std::unique_ptr<DhcpOption>> options;
};

QTEST_GUILESS_MAIN(TestOptionsData)
#include "tst_options_data.moc"
