#include "dhcpoption.h"
#include "trial.h"
#include "vorkanclient.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include <memory>

namespace {

void store(const QString &key, quint32 type, const QString &value)
{
    VorkanClient client;
    client.create(key, _RegEntryType{type});
    client.set(key, value, _RegEntryParam());
    client.commit(QString());
}

} // namespace

class TestOption : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root.forgetRecorded();
        m_root.installRecorder(QStringLiteral("/usr/sbin/kiro-dhclient-edit"));
    }

    void refused_data()
    {
        QTest::addColumn<QByteArray>("content"); // null: no file
        QTest::addColumn<int>("exception");
        QTest::addColumn<QStringList>("missing");
        const QString code = QStringLiteral("code");
        const QString name = QStringLiteral("<linux-name>");
        const QString type = QStringLiteral("<linux-type>");
        QTest::newRow("no file") << QByteArray() << 1 << QStringList();
        QTest::newRow("ill-formed") << QByteArray("<dhcp-option>") << 2 << QStringList({code, name, type});
        QTest::newRow("ill-formed at the end")
            << QByteArray("<dhcp-option><code>1</code><linux-name>n</linux-name><linux-type>text</linux-type>") << 2
            << QStringList();
        QTest::newRow("no type") << QByteArray("<dhcp-option><code>1</code><linux-name>n</linux-name> </dhcp-option>")
                                 << 2 << QStringList(type);
        QTest::newRow("predefined, code 0, no name")
            << QByteArray("<dhcp-option><code>0</code><linux-predefined>yes</linux-predefined> </dhcp-option>") << 2
            << QStringList({code, name});
    }

    void refused()
    {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, missing);
        if (!content.isNull())
            m_root.write(QStringLiteral("/x.xml"), content);
        const CapturedErrors errors;
        int thrown = 0;
        try {
            const DhcpOption option(m_root.path(QStringLiteral("/x.xml")), nullptr);
        } catch (DhcpOption::ExceptionType exception) {
            thrown = exception;
        }
        QTEST(thrown, "exception");
        QString expected;
        const QString path = m_root.path(QStringLiteral("/x.xml"));
        for (const QString &what : qAsConst(missing))
            expected += QStringLiteral("Error:  No %1 specified in %2\n").arg(what, path);
        QCOMPARE(errors.text(), expected);
    }

    void localizedText_data()
    {
        QTest::addColumn<QString>("tag");
        QTest::addColumn<QStringList>("languages");
        QTest::addColumn<QString>("chosen");
        const auto row = [](const char *tag, const char *languages, const char *chosen) {
            QTest::addRow("%s of %s", tag, languages)
                << QString::fromUtf8(tag) << QString::fromUtf8(languages).split(QLatin1Char(' '), Qt::SkipEmptyParts)
                << QString::fromUtf8(chosen);
        };
        row("de_DE", "de_DE de en", "de_DE");
        row("de_DE.UTF-8", "de_DE de en", "de_DE");
        row("de_AT", "de_DE de en", "de");
        row("fr_FR", "de en_US en", "en_US");
        row("fr_FR", "de en_US.UTF-8 en_US", "en_US.UTF-8");
        row("en_GB", "en_US en", "en");
        row("en_GB", "en_US de", "");
        row("C", "en", "en");
        row("fr", "de", "");
        row(".UTF-8", "en", "en");
        row("_DE", "_DE en", "_DE");
        row("DE", "de en", "en");
        row("", "C en", "C"); // the system locale
        row("de", "", "");
    }

    void localizedText()
    {
        QFETCH(QString, tag);
        QFETCH(QStringList, languages);
        QHash<QString, QString> texts;
        for (const QString &language : qAsConst(languages))
            texts.insert(language, language);
        QTEST(DhcpOption(QString(), nullptr).localizedText(tag, texts), "chosen");
    }

    void setCode()
    {
        DhcpOption option(m_root.define(QStringLiteral("typed"), 200, Custom), nullptr);
        for (const char *text : {"0", "256", "", "12a", "-1", "0x10", "4294967297"}) {
            QVERIFY2(!option.setCode(QString::fromUtf8(text)), text);
            QCOMPARE(option.code, 200u);
        }
        for (const char *text : {"1", "255", "007"}) {
            QVERIFY2(option.setCode(QString::fromUtf8(text)), text);
            QCOMPARE(option.code, QString::fromUtf8(text).toUInt());
        }
    }

    void storedCode_data()
    {
        QTest::addColumn<QByteArray>("kind");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<quint32>("code");
        QTest::newRow("valid") << Custom << QStringLiteral("210") << 210u;
        QTest::newRow("out of range") << Custom << QStringLiteral("300") << 300u;
        QTest::newRow("zero") << Custom << QStringLiteral("0") << 0u;
        QTest::newRow("empty") << Custom << QString() << 200u;
        QTest::newRow("no number") << Custom << QStringLiteral("0xD2") << 200u;
        QTest::newRow("predefined") << Predefined << QStringLiteral("210") << 200u;
    }

    void storedCode()
    {
        QFETCH(QByteArray, kind);
        QFETCH(QString, stored);
        const QString name = QStringLiteral("stored-%1").arg(qHash(QByteArray(QTest::currentDataTag())));
        store(QStringLiteral("root/DHCP/Code_") + name, VorkanNumberType, stored);
        const DhcpOption option(m_root.define(name, 200, kind), nullptr);
        QTEST(option.code, "code");
        QTEST(option.appliedCode, "code");
        QCOMPARE(option.requestKey, QStringLiteral("root/DHCP/Req_") + name);
    }

    void currentValue_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("value");
        const auto row = [](const char *content, const char *value) {
            QTest::newRow(content) << QByteArray(content) << QString::fromUtf8(value);
        };
        row("x=1", "1");
        row("# a=b\n\n   \n  x=a=b \nx=2", "a=b ");
        row("# only\n\nno assignment\n", "N/A");
        row("", "N/A");
        row("x=", "");
        row("x='it''s'", "it''s");
        row("x=\"q\"", "q");
        row("x='open", "'open");
        row("x='mixed\"", "'mixed\"");
        row("x='", "");
        row("x=''", "");
        row("x= 'kept'", " 'kept'");
        row("x='äöü €'\r\n", "äöü €");
    }

    void currentValue()
    {
        QFETCH(QByteArray, content);
        m_root.setValue(QStringLiteral("valued"), content);
        const DhcpOption option(m_root.define(QStringLiteral("valued"), 200, Custom), nullptr);
        QTEST(option.currentValue, "value");
    }

    void valueFileChosen()
    {
        const QString eth0 = QStringLiteral("/var/lib/dhcp3/vars/eth0/");
        const QString eth1 = QStringLiteral("/var/lib/dhcp3/vars/eth1/");
        const QStringList order = {eth0 + QStringLiteral("a-b"), eth0 + QStringLiteral("a_b"),
                                   eth1 + QStringLiteral("a-b"), eth1 + QStringLiteral("a_b")};
        for (const QString &path : order)
            m_root.write(path, "x=" + path.toUtf8());
        DhcpOption option(m_root.define(QStringLiteral("a_b"), 200, Custom), nullptr);
        for (const QString &path : order) {
            option.readCurrentValue();
            QCOMPARE(option.currentValue, path);
            m_root.remove(path);
        }
        option.readCurrentValue();
        QCOMPARE(option.currentValue, QStringLiteral("N/A"));
        m_root.write(order.at(0), "# nothing\n");
        m_root.write(order.at(3), "x=never\n");
        option.readCurrentValue();
        QCOMPARE(option.currentValue, QStringLiteral("N/A"));
    }

    void applied_data()
    {
        QTest::addColumn<QByteArray>("kind");
        QTest::addColumn<quint32>("applied");
        QTest::addColumn<quint32>("code");
        QTest::addColumn<bool>("requested");
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<bool>("result");
        const auto row = [](const char *tag, const QByteArray &kind, quint32 applied, quint32 code, bool requested,
                            const char *arguments, bool result) {
            QTest::newRow(tag) << kind << applied << code << requested << QString::fromUtf8(arguments) << result;
        };
        row("predefined, requested", Predefined, 200, 200, true, "--add-request|N", false);
        row("predefined, not requested", Predefined, 200, 200, false, "--del-request|N", false);
        row("custom, requested", Custom, 200, 200, true, "--add-new-option|N 200 text|--add-request|N", false);
        row("custom, not requested", Custom, 200, 200, false, "--del-new-option|N 200 text|--del-request|N", false);
        row("edited", Custom, 200, 210, true,
            "--del-new-option|N 200 text|--del-new-option|N 200 text|--add-new-option|N 210 text|--add-request|N",
            true);
        row("stored", Custom, 210, 210, true,
            "--del-new-option|N 200 text|--add-new-option|N 210 text|--add-request|N", true);
        row("edited back", Custom, 210, 200, false,
            "--del-new-option|N 210 text|--del-new-option|N 200 text|--del-request|N", false);
        row("managed", Predefined + "<dhcp-class>managed</dhcp-class>", 200, 200, true, "", false);
        row("always off", Custom + "<dhcp-class>always-off</dhcp-class>", 200, 210, true, "", false);
    }

    void applied()
    {
        QFETCH(QByteArray, kind);
        QFETCH(quint32, applied);
        QFETCH(quint32, code);
        QFETCH(bool, requested);
        QFETCH(QString, arguments);
        QFETCH(bool, result);
        DhcpOption option(m_root.define(QStringLiteral("N"), 200, kind), nullptr);
        option.appliedCode = applied;
        option.code = code;
        option.appliedRequested = !requested;
        QCOMPARE(option.applyToClient(requested), result);
        const bool ignored = arguments.isEmpty();
        QCOMPARE(m_root.recorded(),
                 ignored ? QStringList() : QStringList(QStringLiteral("kiro-dhclient-edit|") + arguments));
        QCOMPARE(option.appliedCode, ignored ? applied : code);
        QCOMPARE(option.appliedRequested, ignored != requested);
        QString stored;
        VorkanClient().get(option.codeKey, stored, _RegEntryParam(), QString());
        if (result)
            QCOMPARE(stored, QString::number(code));
    }

    void toolMissingOrSlow()
    {
        m_root.remove(QStringLiteral("/usr/sbin/kiro-dhclient-edit"));
        auto option = std::make_unique<DhcpOption>(m_root.define(QStringLiteral("slow"), 200, Custom), nullptr);
        QElapsedTimer timer;
        timer.start();
        option->applyToClient(true);
        QVERIFY(timer.elapsed() < 1000);
        QCOMPARE(option->appliedRequested, true);

        m_root.installRecorder(QStringLiteral("/usr/sbin/kiro-dhclient-edit"), "sleep 3");
        timer.restart();
        option->applyToClient(true);
        QVERIFY(timer.elapsed() >= 1900 && timer.elapsed() < 2900);
        QTRY_VERIFY(option->children().isEmpty());
        QCOMPARE(m_root.recorded(), QStringList());
    }

private:
    TrialRoot m_root;
};

QTEST_GUILESS_MAIN(TestOption)
#include "tst_option.moc"
