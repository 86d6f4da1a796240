#include "configparser.h"
#include "dhcpoption.h"
#include "trial.h"
#include "vorkanclient.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QXmlInputSource>
#include <QXmlSimpleReader>

#include <sys/stat.h>

namespace {

/// Reads one document into the record; whether it is accepted.
bool read(const QByteArray &document, DhcpOption &option)
{
    QXmlInputSource source;
    source.setData(document);
    QXmlSimpleReader reader;
    ConfigParser parser(&option);
    reader.setContentHandler(&parser);
    return reader.parse(source);
}

QString texts(const QHash<QString, QString> &table)
{
    QStringList texts;
    for (auto text = table.cbegin(); text != table.cend(); ++text)
        texts << text.key() + ':' + text.value();
    texts.sort();
    return texts.join(' ');
}

/// What the record holds for an element.
QString field(const DhcpOption &option, const QString &element)
{
    return QHash<QString, QString>{{"code", QString::number(option.standardCode)},
                                   {"name", texts(option.names)},
                                   {"windows-name", option.windowsName},
                                   {"windows-type", option.windowsType},
                                   {"linux-name", option.linuxName},
                                   {"linux-type", option.linuxType},
                                   {"dhcp-class", QString::number(option.dhcpClass)},
                                   {"description", texts(option.descriptions)},
                                   {"example", option.example},
                                   {"default", QString::number(option.requestedByDefault)},
                                   {"standard-option", QString::number(option.standardOption)},
                                   {"hide-option", QString::number(option.hideOption)},
                                   {"linux-predefined", QString::number(option.linuxPredefined)}}
        .value(element);
}

QStringList list(const char *words)
{
    return QString::fromUtf8(words).split('|');
}

} // namespace

class TestModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { root.installRecorder("/usr/sbin/kiro-dhclient-edit"); }

    /// Accepted words stand with what the record holds then, where that is another text.
    void words_data()
    {
        QTest::addColumn<QStringList>("accepted");
        QTest::addColumn<QStringList>("refused");
        const auto row = [](const char *element, const char *accepted, const char *refused = nullptr) {
            QTest::newRow(element) << list(accepted) << (refused ? list(refused) : QStringList());
        };
        row("code", "42|0x2A=42|0X2a=42|052=42|0|300|4294967295", "4 2|42h||-1|4294967296|0x|08");
        row("name", "x y=en:x y");
        row("description", " a\n  b =en: a\n  b ");
        row("windows-name", "W");
        row("windows-type",
            "Byte|Word|Long|String|Binary|Byte Array|BYTE ARRAY|ip address|Long Integer Array|Encapsulated|"
            "Long Array Integer",
            "Array|Short|IpAddress|| Byte|Byte ");
        row("linux-name", "n_1");
        row("linux-type",
            "integer 8|unsigned integer 16|array of unsigned integer 8|Array Of Boolean|text|string|domain-list|"
            "ip6-address|unsigned text|",
            "array of text|array of STRING|array of unsigned text|array of signed string|encapsulate|"
            "ENCAPSULATE vendor|array of encapsulate vendor");
        row("dhcp-class",
            "normal=0|Standard=0|user-controlled=0|Managed=1|Always-on=2|always on=2|ALWAYS-OFF=3|Always Off=3",
            "Always_On|Always  On||Never");
        row("example", " x |");
        row("default", "On=1|TRUE=1|yes=1|Enabled=1|off=0|False=0|NO=0|DISABLED=0", "1|0|| on| true |nope");
        row("standard-option", "on=1|off=0", "x");
        row("hide-option", "on=1|off=0", "x");
        row("linux-predefined", "on=1|off=0", "x");
    }

    void words()
    {
        QFETCH(QStringList, accepted);
        QFETCH(QStringList, refused);
        const QString element = QTest::currentDataTag();
        for (const QString &entry : accepted + refused) {
            const QString word = entry.section('=', 0, 0);
            const bool isRefused = refused.contains(entry);
            DhcpOption option(QString(), nullptr);
            const QString before = field(option, element);
            const CapturedErrors errors;
            const QString document = "<dhcp-option> <%1>%2</%1> </dhcp-option>";
            QVERIFY2(read(document.arg(element, word).toUtf8(), option) != isRefused, qPrintable(word));
            QString lines = word.isEmpty() ? "<" + element + "> element without a value\n" : QString();
            if (isRefused)
                lines += "Bad <" + element + "> element: '" + word + "'\n";
            QCOMPARE(errors.text(), lines);
            QCOMPARE(field(option, element), isRefused ? before : entry.section('=', -1));
        }
    }

    void documents_data()
    {
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QString>("lines");
        QTest::addColumn<QString>("names");
        const auto row = [](const char *document, bool accepted, const char *lines, const char *names = "") {
            QTest::newRow(document) << accepted << QString(lines) << QString(names);
        };
        row("<dhcp-option><code>1</code></dhcp-option>", true, "<dhcp-option> element without a value\n");
        row("<dhcp-option><Comment>x</Comment><name>x</name></dhcp-option>", false, "Unrecognized element 'Comment'\n");
        row("<options><name>1</name> </options>", false, "Unrecognized element 'options'\n", "en:1");
        row("<dhcp-option><name>1</name>", false, "", "en:1");
        row("<dhcp-option><default>x</default><code>y</code></dhcp-option>", false, "Bad <default> element: 'x'\n");
        row("<a:dhcp-option xmlns:a='u'><name>x<a:code>7</a:code>y</name> </a:dhcp-option>", true, "", "en:y");
        row("<DHCP-Option><NAME>a</NAME><name x='y' LANG='DE'>b</name><Name lang='en'>&lt;c</Name> </DHCP-Option>",
            true, "", "DE:b en:<c");
    }

    void documents()
    {
        const CapturedErrors errors;
        DhcpOption option(QString(), nullptr);
        const bool accepted = read(QTest::currentDataTag(), option);
        QTEST(accepted, "accepted");
        QTEST(errors.text(), "lines");
        QTEST(texts(option.names), "names");
    }

    void deepDocument()
    {
        DhcpOption option(QString(), nullptr);
        QVERIFY(!read("<dhcp-option>" + QByteArray("<name>").repeated(200000), option));
    }

    void parserReports()
    {
        DhcpOption option(QString(), nullptr);
        ConfigParser parser(&option);
        const QXmlParseException exception("mess", 3, 7, "pub", "sys");
        const CapturedErrors errors;
        QVERIFY(parser.warning(exception) && parser.error(exception) && !parser.fatalError(exception));
        QCOMPARE(parser.errorString(), "DHCP XML config file parse error");
        const QString rest = "\n   mess\n   Line: 7, Column: 3\n   PublicID: 'pub'\n   SystemID: 'sys'\n";
        QCOMPARE(errors.text(),
                 "XML parse warning:" + rest + "XML parse error." + rest + "XML parse fatal error." + rest);
    }

    void localizedText_data()
    {
        QTest::addColumn<QString>("chosen");
        const auto row = [](const char *tagAndLanguages, const char *chosen) {
            QTest::newRow(tagAndLanguages) << QString(chosen);
        };
        row("de_DE de_DE de en", "de_DE");
        row("de_DE.UTF-8 de_DE de en", "de_DE");
        row("de_AT de_DE de en", "de");
        row("fr_FR de en_US en", "en_US");
        row("fr_FR de en_US.UTF-8 en_US", "en_US.UTF-8");
        row("en_GB en_US en", "en");
        row("en_GB en_US de", "");
        row("fr de", "");
        row(".UTF-8 en", "en");
        row("_DE _DE en", "_DE");
        row("DE de en", "en");
        row(" C en", "C"); // the system locale
        row("de", "");
    }

    void localizedText()
    {
        const QStringList languages = QString(QTest::currentDataTag()).split(' ');
        QHash<QString, QString> texts;
        for (const QString &language : languages.mid(1))
            texts.insert(language, language);
        QTEST(DhcpOption(QString(), nullptr).localizedText(languages.at(0), texts), "chosen");
    }

    void setCode()
    {
        DhcpOption option(QString(), nullptr);
        for (const QString &text : list("1|255|007|0|256||12a|-1|0x10|4294967297")) {
            const bool accepted = text == "1" || text == "255" || text == "007";
            const quint32 expected = accepted ? text.toUInt() : option.code;
            QCOMPARE(option.setCode(text), accepted);
            QCOMPARE(option.code, expected);
        }
    }

    void storedCode()
    {
        root.presetRegistry("('root/DHCP/Code_o0', 7, '210'), ('root/DHCP/Code_o1', 7, '300'),"
                            " ('root/DHCP/Code_o2', 7, ''), ('root/DHCP/Code_o3', 7, '0xD2'),"
                            " ('root/DHCP/Code_o5', 7, '210')");
        const quint32 codes[] = {210, 300, 200, 200, 200, 200};
        for (int i = 0; i < 6; ++i) {
            const DhcpOption option(root.define("o" + QString::number(i), 200, i == 5 ? Predefined : Custom), nullptr);
            QCOMPARE(option.code, codes[i]);
            QCOMPARE(option.appliedCode, codes[i]);
        }
    }

    void currentValue_data()
    {
        QTest::addColumn<QString>("value");
        const auto row = [](const char *content, const char *value) {
            QTest::newRow(content) << QString::fromUtf8(value);
        };
        row("x=1", "1");
        row("# a=b\n\n   \n no\n  x=a=b \nx=2", "a=b ");
        row("# only\n\nno assignment\n", "N/A");
        row("", "N/A");
        row("x=", "");
        row("x='it''s'", "it''s");
        row("x=\"q\"", "q");
        row("x='open", "'open");
        row("x='mixed\"", "'mixed\"");
        row("x='", "");
        row("x= 'kept'", " 'kept'");
        row("x='äöü €'\r\n", "äöü €");
    }

    void currentValue()
    {
        root.setValue("valued", QTest::currentDataTag());
        const DhcpOption option(root.define("valued", 200, Custom), nullptr);
        QTEST(option.currentValue, "value");
    }

    void valueFileChosen()
    {
        const QStringList order = list("/eth0/a-b|/eth0/a_b|/eth1/a-b|/eth1/a_b");
        const QString directory = "/var/lib/dhcp3/vars";
        for (const QString &path : order)
            root.write(directory + path, "x=" + path.toUtf8());
        DhcpOption option(root.define("a_b", 200, Custom), nullptr);
        const int descriptors = countDescriptors();
        for (const QString &path : order) {
            option.readCurrentValue();
            QCOMPARE(option.currentValue, path);
            root.remove(directory + path);
        }
        // The first that is readable is the one, whatever comes of it.
        const QString first = directory + order.at(0);
        root.write(directory + order.at(1), "x=never");
        const auto readFirst = [&](const QString &command) {
            root.remove(first);
            QProcess::execute("sh", {"-c", command.arg(root.path(first))});
            option.readCurrentValue();
            return option.currentValue;
        };
        QCOMPARE(readFirst("echo '# nothing' >%1"), "N/A");
        QCOMPARE(readFirst("mkfifo %1"), "N/A");
        QCOMPARE(readFirst("ln -s . %1"), "N/A");
        QCOMPARE(readFirst("{ echo x=y; head -c 100M /dev/zero | tr '\\0' z; } >%1"), "y");
        QVERIFY(readFirst("{ printf x=; head -c 100M /dev/zero | tr '\\0' z; } >%1").size() < 100000);
        QCOMPARE(countDescriptors(), descriptors);
    }

    void applied_data()
    {
        QTest::addColumn<QByteArray>("kind");
        QTest::addColumn<quint32>("applied");
        QTest::addColumn<quint32>("code");
        QTest::addColumn<bool>("result");
        const auto row = [](const char *arguments, const QByteArray &kind, quint32 applied, quint32 code, bool result) {
            QTest::newRow(arguments) << kind << applied << code << result;
        };
        row("--add-request|N", Predefined, 200, 200, false);
        row("--del-request|N", Predefined, 200, 200, false);
        row("--add-new-option|N 200 text|--add-request|N", Custom, 200, 200, false);
        row("--del-new-option|N 200 text|--del-request|N", Custom, 200, 200, false);
        row("--del-new-option|N 200 text|--del-new-option|N 200 text|--add-new-option|N 210 text|--add-request|N",
            Custom, 200, 210, true);
        row("--del-new-option|N 200 text|--add-new-option|N 211 text|--add-request|N",
            Custom + "<dhcp-class>always-on</dhcp-class>", 211, 211, true);
        row("--del-new-option|N 210 text|--del-new-option|N 200 text|--del-request|N", Custom, 210, 200, false);
        row("", Predefined + "<dhcp-class>managed</dhcp-class>", 200, 200, false);
        row("", Custom + "<dhcp-class>always-off</dhcp-class>", 200, 212, false);
    }

    void applied()
    {
        QFETCH(quint32, applied);
        QFETCH(quint32, code);
        QFETCH(bool, result);
        QFETCH(QByteArray, kind);
        const QString arguments = QTest::currentDataTag();
        const bool requested = !arguments.contains("--del-request");
        const bool isIgnored = arguments.isEmpty();
        root.forgetRecorded();
        DhcpOption option(root.define("N", 200, kind), nullptr);
        option.appliedCode = applied;
        option.code = code;
        option.appliedRequested = !requested;
        QCOMPARE(option.applyToClient(requested), result);
        QCOMPARE(root.recorded(), isIgnored ? QStringList() : QStringList("kiro-dhclient-edit|" + arguments));
        QCOMPARE(option.appliedCode, isIgnored ? applied : code);
        QCOMPARE(option.appliedRequested, isIgnored != requested);
        VorkanClient().commit(QString());
        QCOMPARE(root.sql(QString("SELECT type FROM entry WHERE key = 'root/DHCP/Code_N' AND value = %1").arg(code)),
                 result ? QStringList("7") : QStringList());
    }

    void toolMissingOrSlow()
    {
        root.remove("/usr/sbin/kiro-dhclient-edit");
        DhcpOption option(root.define("slow", 200, Custom), nullptr);
        option.applyToClient(true);
        QVERIFY(option.appliedRequested);
        root.forgetRecorded();
        root.installRecorder("/usr/sbin/kiro-dhclient-edit", "sleep 600");
        QElapsedTimer timer;
        timer.start();
        option.applyToClient(true);
        QVERIFY(timer.elapsed() >= 1990);
        QVERIFY(eventually([&] { return option.children().isEmpty(); }));
        QVERIFY(timer.elapsed() < 500000);
    }

private:
    TrialRoot root;
};

QTEST_GUILESS_MAIN(TestModel)
#include "tst_model.moc"
