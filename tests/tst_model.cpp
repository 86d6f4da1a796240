#include "configparser.h"
#include "dhcpoption.h"
#include "trial.h"
#include "vorkanclient.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QXmlInputSource>
#include <QXmlSimpleReader>

namespace {

/// Reads one document into the record; whether it is accepted.
bool read(const QString &document, DhcpOption &option)
{
    QXmlInputSource source;
    source.setData(document.toUtf8());
    QXmlSimpleReader reader;
    ConfigParser parser(&option);
    reader.setContentHandler(&parser);
    return reader.parse(source);
}

const QStringList elements = {"code",       "windows-name", "windows-type",    "linux-name",      "linux-type",
                              "dhcp-class", "example",      "default",         "standard-option", "hide-option",
                              "name",       "description",  "linux-predefined"};

/// What the record holds for each of them.
QStringList fields(const DhcpOption &record)
{
    const auto texts = [](const auto &table) -> QString { return table.value("DE") + '/' + table.value("en"); };
    // clang-format off
    return {QString::number(record.standardCode), record.windowsName, record.windowsType, record.linuxName,
            record.linuxType, QString::number(record.dhcpClass), record.example,
            QString::number(record.requestedByDefault), QString::number(record.standardOption),
            QString::number(record.hideOption), texts(record.names), texts(record.descriptions),
            QString::number(record.linuxPredefined)};
    // clang-format on
}

int countDescriptors()
{
    return QDir("/proc/self/fd").entryList(QDir::Files | QDir::System).count();
}

} // namespace

class TestModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        root.installRecorder("/usr/sbin/kiro-dhclient-edit");
        root.presetRegistry("('x', 0, '')");
    }

    /// Element, words that are accepted, with what the record holds then if it is another text, and refused ones.
    void words_data()
    {
        addRows(R"(
            code ; 42,0x2A=42,0X2a=42,052=42,0,300,4294967295 ; 4 2,42h,,-1,4294967296,0x,08
            name ; x y=/x y
            description ;  a\n  b =/ a\n  b  ;
            windows-name ; W
            windows-type ; Byte,Word,Long,String,Binary,BYTE ARRAY,ip address,Long Array Integer ; Array,,Byte ,Short
            linux-name ; n_1
            linux-type ; integer 8,array of unsigned integer 8,text,string,ip6-address, ; array of unsigned text
            linux-type ; Array Of Boolean,unsigned text ; array of STRING,ENCAPSULATE vendor,array of encapsulate x
            dhcp-class ; Standard=0,user-controlled=0,Managed=1,always on=2,ALWAYS-OFF=3 ; Always_On,Always  On,,Never
            example ;  x , ;
            default ; On=1,TRUE=1,yes=1,Enabled=1,off=0,False=0,NO=0,DISABLED=0 ; 1,0,, on, true ,nope
            standard-option ; on=1,off=0 ; x
            hide-option ; on=1,off=0 ; x
            linux-predefined ; on=1,off=0 ; x)");
    }

    void words()
    {
        QFETCH(QStringList, cells);
        const QString element = cells.at(0);
        const QStringList accepted = cells.at(1).split(',');
        for (const QString &entry : accepted + (cells.value(2).isEmpty() ? QStringList() : cells.at(2).split(','))) {
            const QString word = entry.section('=', 0, 0);
            const bool isAccepted = accepted.contains(entry);
            DhcpOption option(QString(), nullptr);
            QStringList expected = fields(option);
            if (isAccepted)
                expected[elements.indexOf(element)] = entry.section('=', -1);
            const CapturedErrors errors;
            const QString document = "<dhcp-option> <%1>%2</%1> </dhcp-option>";
            QVERIFY2(read(document.arg(element, word), option) == isAccepted, qPrintable(word));
            QCOMPARE(fields(option), expected);
            QCOMPARE(errors.text(), (word.isEmpty() ? "<" + element + "> element without a value\n" : QString())
                                        + (isAccepted ? QString() : "Bad <" + element + "> element: '" + word + "'\n"));
        }
    }

    /// Document, whether it is accepted, the line on standard error, the names that are stored.
    void documents_data()
    {
        addRows(R"(
            <dhcp-option><code>1</code></dhcp-option> ; 1 ; <dhcp-option> element without a value\n ; /
            <dhcp-option><Comment>x</Comment><name>x</name></dhcp-option> ; 0 ; Unrecognized element 'Comment'\n ; /
            <options><name>1</name> </options> ; 0 ; Unrecognized element 'options'\n ; /1
            <dhcp-option><name>1</name> ; 0 ;  ; /1
            <dhcp-option><default>x</default><code>y</code></dhcp-option> ; 0 ; Bad <default> element: 'x'\n ; /
            <a:dhcp-option xmlns:a='u'><name>x<a:code>7</a:code>y</name> </a:dhcp-option> ; 1 ;  ; /y
            <DHCP-Option><NAME>a</NAME><name x='y' LANG='DE'>b</name><name lang='en'>&lt;c</name> </DHCP-Option> ; 1 ;  ; b/<c)");
    }

    void documents()
    {
        QFETCH(QStringList, cells);
        const CapturedErrors errors;
        DhcpOption option(QString(), nullptr);
        QCOMPARE(read(cells.at(0), option), cells.at(1) == "1");
        QCOMPARE(errors.text(), cells.at(2));
        QCOMPARE(fields(option).at(elements.indexOf("name")), cells.at(3));
    }

    void depth()
    {
        DhcpOption option(QString(), nullptr);
        QVERIFY(!read("<dhcp-option>" + QString("<name>").repeated(200000), option));
        QVERIFY(read("<dhcp-option>" + QString("<name>x</name>").repeated(1000) + " </dhcp-option>", option));
    }

    /// Tag, what is chosen, the languages that there are.
    void localizedText_data()
    {
        addRows(R"(
            de_DE ; de_DE ; de_DE ; de ; en
            de_DE.UTF-8 ; de_DE ; de_DE ; de
            de_AT ; de ; de_DE ; de ; en
            fr_FR ; en_US ; de ; en_US ; en
            fr ; en_US.UTF-8 ; en_US.UTF-8 ; en_US
            en_GB ;  ; en_US ; de
            .UTF-8 ; en ; en ;
            _DE ; en ; DE ; en ;
             ; C ; C ; en)");
    }

    void localizedText()
    {
        QFETCH(QStringList, cells);
        QHash<QString, QString> texts;
        for (const QString &language : cells.mid(2))
            texts.insert(language, language);
        QCOMPARE(DhcpOption(QString(), nullptr).localizedText(cells.at(0), texts), cells.at(1));
    }

    void storedCode_data()
    {
        addRows(R"(
            210 ; 210
            300 ; 300
             ; 200
            0xD2 ; 200
            211 ; 200 ; <linux-predefined>yes</linux-predefined>)");
    }

    void storedCode()
    {
        QFETCH(QStringList, cells);
        root.sql(QString("REPLACE INTO entry VALUES('root/DHCP/Code_stored', 7, '%1')").arg(cells.at(0)));
        const DhcpOption option(root.define("stored", 200, Custom + cells.value(2).toUtf8()), nullptr);
        QCOMPARE(QString::number(option.code), cells.at(1));
        QCOMPARE(option.appliedCode, option.code);
    }

    void currentValue_data()
    {
        addRows(R"(
            x=1 ; 1
            \n # a=b\n\n   \n no\n  x=a=b \nx=2 ; a=b  ;
            # only\n\nno assignment\n ; N/A
            x= ;
            x=\qq\q ; q
            x='open ; 'open
            x='mixed\q ; 'mixed\q
            x=' ;
            x='äö\rü €'\r\n ; äöü €)");
    }

    void currentValue()
    {
        QFETCH(QStringList, cells);
        cells.replaceInStrings("\\r", "\r").replaceInStrings("\\q", "\"");
        root.setValue("valued", cells.at(0).toUtf8());
        QCOMPARE(DhcpOption(root.define("valued", 200, Custom), nullptr).currentValue, cells.at(1));
    }

    void valueFileChosen()
    {
        const QString directory = "/var/lib/dhcp3/vars";
        const QStringList order = {"/eth0/a-b", "/eth0/a_b", "/eth1/a-b", "/eth1/a_b"};
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
        root.write(directory + order.at(1), "x=never");
        const auto readFirst = [&](const QString &command) {
            const QString first = root.path(directory + order.at(0));
            QProcess::execute("sh", {"-c", QString("rm -f %1; " + command).arg(first)});
            option.readCurrentValue();
            return option.currentValue;
        };
        QCOMPARE(readFirst("echo '# nothing' >%1"), "N/A");
        QCOMPARE(readFirst("mkfifo %1"), "N/A");
        QVERIFY(readFirst("{ printf x=; head -c 100M /dev/zero | tr '\\0' z; } >%1").size() < 100000);
        QCOMPARE(countDescriptors(), descriptors);
    }

    /// The tool's arguments, the code in effect and the last applied one, whether a code is stored, the kind.
    void applied_data()
    {
        addRows(R"(
            --add-request|N ; 200 ; 200 ; 0 ; <linux-predefined>yes</linux-predefined>
            --del-request|N ; 200 ; 200 ; 0 ; <linux-predefined>yes</linux-predefined>
            --add-new-option|N 200 text|--add-request|N ; 200 ; 200 ; 0 ;
            --del-new-option|N 200 text|--del-request|N ; 200 ; 200 ; 0 ;
            --del-new-option|N 200 text|--del-new-option|N 200 text|--add-new-option|N 210 text|--add-request|N ; 210 ; 200 ; 1 ;
            --del-new-option|N 200 text|--add-new-option|N 211 text|--add-request|N ; 211 ; 211 ; 1 ; <dhcp-class>Always-On</dhcp-class>
            --del-new-option|N 210 text|--del-new-option|N 200 text|--del-request|N ; 200 ; 210 ; 0 ;
             ; 200 ; 200 ; 0 ; <dhcp-class>Managed</dhcp-class>
             ; 212 ; 200 ; 0 ; <dhcp-class>Always-Off</dhcp-class>)");
    }

    void applied()
    {
        QFETCH(QStringList, cells);
        const QString arguments = cells.at(0);
        const bool requested = !arguments.contains("--del-request");
        const bool isIgnored = arguments.isEmpty();
        root.forgetRecorded();
        DhcpOption option(root.define("N", 200, Custom + cells.at(4).toUtf8()), nullptr);
        option.code = cells.at(1).toUInt();
        option.appliedCode = cells.at(2).toUInt();
        option.appliedRequested = !requested;
        QCOMPARE(option.applyToClient(requested), cells.at(3) == "1");
        while (!isIgnored && root.recorded().isEmpty()) // it may be slow on a busy machine
            QTest::qSleep(10);
        QCOMPARE(root.recorded(), isIgnored ? QStringList() : QStringList("kiro-dhclient-edit|" + arguments));
        QCOMPARE(QString::number(option.appliedCode), cells.at(isIgnored ? 2 : 1));
        QCOMPARE(option.appliedRequested, isIgnored != requested);
        VorkanClient().commit(QString());
        const QString stored = "SELECT count(*) FROM entry WHERE key = 'root/DHCP/Code_N' AND type = 7 AND value = "
                               + cells.at(1);
        QCOMPARE(root.sql(stored), QStringList(cells.at(3)));
    }

    void slowTool()
    {
        DhcpOption option(root.define("slow", 200, Custom), nullptr);
        root.installRecorder("/usr/sbin/kiro-dhclient-edit", "exec sleep 300");
        QElapsedTimer timer;
        timer.start();
        option.applyToClient(true);
        QVERIFY(timer.elapsed() > 1990 && timer.elapsed() < 250000);
        QVERIFY(eventually([&] { return option.children().isEmpty(); }));
    }

private:
    TrialRoot root;
};

QTEST_GUILESS_MAIN(TestModel)
#include "tst_model.moc"
