#include "dhcpoption.h"
#include "trial.h"
#include "vorkanclient.h"

#include <QElapsedTimer>

#include <sys/stat.h>

class TestModel : public QObject
{
    Q_OBJECT

private slots:
    /// Element, words that are accepted, with what the record holds then if it is another text, and refused ones.
    void words_data()
    {
        addRows(R"(
            code ; 42,0x2A=42,0X2a=42,052=42,300,4294967295 ; 4 2,42h,,-1,4294967296,0x,08
            name ; x y=/x y
            description ;  a\n  b =/ a\n  b ,x=/x
            windows-name ; W,
            windows-type ; Byte,Word,Long,String,Binary,encapsulated,BYTE ARRAY,ip address,Long Array Integer ; Array,,Byte ,Short
            linux-name ; n_1
            linux-type ; Array Of Boolean,unsigned text,string ; array of unsigned text,Array Of STRING,ENCAPSULATE x
            dhcp-class ; Normal=0,Standard=0,user-controlled=0,Managed=1,always on=2,always off=3,ALWAYS-OFF=3 ; Always_On,Always  On,,Never
            example ;  x ,
            default ; On=1,TRUE=1,yes=1,Enabled=1,off=0,False=0,NO=0,DISABLED=0 ; 1,0,, on, true ,nope
            standard-option ; on=1,off=0 ; x
            hide-option ; on=1,off=0 ; x
            linux-predefined ; on=1,off=0 ; x)");
    }

    void words()
    {
        QFETCH(QStringList, cells);
        const QString &element = cells.at(0);
        const QStringList accepted = cells.at(1).split(',');
        QMap<QString, QString> expected = fields(DhcpOption(define("n"), nullptr));
        for (const QString &entry : accepted + (cells.size() > 2 ? cells.at(2).split(',') : QStringList())) {
            const QString word = entry.section('=', 0, 0);
            const QString file = define("n", QString("<%1>%2</%1>").arg(element, word));
            const CapturedErrors errors;
            QString report = word.isEmpty() ? "<" + element + "> element without a value\n" : QString();
            if (accepted.contains(entry)) {
                expected[element] = entry.section('=', -1);
                QCOMPARE(fields(DhcpOption(file, nullptr)), expected);
            } else {
                report += "Bad <" + element + "> element: '" + word + "'\n";
                QVERIFY_EXCEPTION_THROWN(DhcpOption(file, nullptr), DhcpOption::ExceptionType);
            }
            QCOMPARE(errors.text(), report);
        }
    }

    void documents()
    {
        const CapturedErrors errors;
        const QString nested = "<NAME x='y' LANG='DE'>b</NAME>"
                               "<name lang='DE'>x<a:code xmlns:a='u'>7</a:code>y<!-- -->&lt;z</name>";
        const QString many = QString("<example>x</example>").repeated(1000);
        const auto read = fields(DhcpOption(define("n", nested + many), nullptr));
        QCOMPARE(read["name"] + read["code"], "b/y<z7");
        QVERIFY_EXCEPTION_THROWN(DhcpOption(define("n", "<Comment>x</Comment>"), nullptr), DhcpOption::ExceptionType);
        QCOMPARE(errors.text(), "Unrecognized element 'Comment'\n");
        const QString deep = define("n", QString("<name>").repeated(200000)); // Qt's reader calls itself for each
        QVERIFY_EXCEPTION_THROWN(DhcpOption(deep, nullptr), DhcpOption::ExceptionType);
    }

    void localizedText()
    {
        const auto chosen = [](const QString &tag, const QString &languages) {
            QHash<QString, QString> texts;
            for (const QString &language : languages.split(' '))
                texts.insert(language, language);
            return DhcpOption(QString(), nullptr).localizedText(tag, texts);
        };
        QCOMPARE(chosen("de_DE.UTF-8", "de_DE de"), "de_DE");
        QCOMPARE(chosen("de_AT.UTF-8", "de_DE de en"), "de");
        QCOMPARE(chosen("fr_FR", "de en_US en"), "en_US");
        QCOMPARE(chosen("en_GB", "de en_US"), QString());
        QCOMPARE(chosen(".UTF-8", "en "), "en"); // not the text whose tag is empty
        QCOMPARE(chosen("", "C en"), "C");       // the test's locale
    }

    void currentValue()
    {
        const std::pair<QByteArray, QString> cases[] = {{"\n # a=b\n\n   \n no\n  x=a=b \nx=2", "a=b "},
                                                        {"# only\n\nno assignment\n", "N/A"},
                                                        {"x=", ""},
                                                        {"x=\"q\"", "q"},
                                                        {"x='mixed\"", "'mixed\""},
                                                        {"x='äö\rü €'\r\n", "äöü €"}};
        for (const auto &[file, value] : cases) {
            root.setValue("n", file);
            QCOMPARE(DhcpOption(define("n"), nullptr).currentValue, value);
        }
    }

    /// The first file that can be opened is read, whatever comes of it: a pipe is not waited for, a long file is cut.
    void valueFileChosen()
    {
        QStringList files;
        for (const char *name : {"eth0/a-b", "eth0/a_b", "eth1/a-b", "eth1/a_b"})
            files << root.write("/var/lib/dhcp3/vars/" + QString(name), QByteArray("x=") + name);
        DhcpOption option(define("a_b"), nullptr);
        const auto descriptors = [] { return QDir("/proc/self/fd").entryList(QDir::Files | QDir::System).count(); };
        const int before = descriptors();
        for (const QString &file : files) {
            option.readCurrentValue();
            QCOMPARE(option.currentValue, file.section('/', -2));
            QFile::remove(file);
        }
        ::mkfifo(qPrintable(files.at(0)), 0600);
        QFile(root.write("/var/lib/dhcp3/vars/eth0/a_b", "x=long")).resize(100 << 20);
        option.readCurrentValue();
        QCOMPARE(option.currentValue, "N/A");
        QFile::remove(files.at(0));
        option.readCurrentValue();
        QVERIFY(option.currentValue.startsWith("long") && option.currentValue.size() < 100000);
        QCOMPARE(descriptors(), before);
    }

    /// The option's name, its stored code, what is typed as one, the kind of option, the tool's arguments.
    void applied_data()
    {
        addRows(R"(
            known ; 211 ;  ; <linux-predefined>yes</linux-predefined> ; --add-request|known
            n ;  ; 255 ;  ; --del-new-option|n 200 text|--del-new-option|n 200 text|--add-new-option|n 255 text|--add-request|n
            hex ; 0xD2 ; 0x10 ;  ; --add-new-option|hex 200 text|--add-request|hex
            s300 ; 300 ; 0 ; <dhcp-class>Always-On</dhcp-class> ; --del-new-option|s300 200 text|--add-new-option|s300 300 text|--add-request|s300
            s210 ; 210 ; 200 ;  ; --del-new-option|s210 210 text|--del-new-option|s210 200 text|--del-request|s210
            managed ;  ;  ; <dhcp-class>Managed</dhcp-class>
            never ;  ; 212 ; <dhcp-class>Always-Off</dhcp-class>)");
    }

    void applied()
    {
        QFETCH(QStringList, cells);
        const QString name = cells.at(0);
        const QStringList calls = cells.mid(4);
        const bool requested = !cells.last().contains("--del-request");
        const bool isIgnored = calls.isEmpty();
        const QString entry = "root/DHCP/Code_" + name;
        if (!cells.at(1).isEmpty())
            root.sql(QString("INSERT INTO entry VALUES('%1', 7, '%2')").arg(entry, cells.at(1)));
        root.installRecorder("/usr/sbin/kiro-dhclient-edit");
        root.forgetRecorded();
        DhcpOption option(define(name, cells.at(3)), nullptr);
        option.setCode(cells.at(2));
        option.appliedRequested = !requested;
        const bool isStored = option.applyToClient(requested);
        QCOMPARE(isStored, !isIgnored && option.code != 200);
        QCOMPARE(root.recorded(calls.count()).replaceInStrings("kiro-dhclient-edit|", ""), calls);
        QCOMPARE(option.appliedCode, isIgnored ? 200 : option.code);
        QCOMPARE(option.appliedRequested, isIgnored != requested);
        VorkanClient().commit(QString());
        QCOMPARE(root.sql("SELECT * FROM entry").contains(QString("%1|7|%2").arg(entry).arg(option.code)), isStored);
    }

    void slowTool()
    {
        DhcpOption option(define("slow"), nullptr);
        root.installRecorder("/usr/sbin/kiro-dhclient-edit", "exec sleep 300");
        QElapsedTimer timer;
        timer.start();
        option.applyToClient(true);
        QVERIFY(timer.elapsed() > 1990 && timer.elapsed() < 250000);
        QVERIFY(eventually([&] { return option.children().isEmpty(); }));
    }

private:
    /// What the record holds for each element.
    static QMap<QString, QString> fields(const DhcpOption &record)
    {
        const auto number = [](uint value) { return QString::number(value); };
        const auto texts = [](const auto &table) -> QString { return table.value("DE") + '/' + table.value("en"); };
        // clang-format off
        return {{"code", number(record.standardCode)}, {"dhcp-class", number(record.dhcpClass)},
                {"windows-name", record.windowsName}, {"windows-type", record.windowsType},
                {"linux-name", record.linuxName}, {"linux-type", record.linuxType}, {"example", record.example},
                {"name", texts(record.names)}, {"description", texts(record.descriptions)},
                {"default", number(record.requestedByDefault)}, {"standard-option", number(record.standardOption)},
                {"hide-option", number(record.hideOption)}, {"linux-predefined", number(record.linuxPredefined)}};
        // clang-format on
    }

    QString define(const QString &name, const QString &more = QString()) const
    {
        const QString elements = "<code>200</code><linux-name>" + name + "</linux-name>" + Custom + more;
        return root.define(name, elements.toUtf8());
    }

    const TrialRoot root;
};

QTEST_GUILESS_MAIN(TestModel)
#include "tst_model.moc"
