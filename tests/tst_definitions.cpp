#include "configparser.h"
#include "dhcpoption.h"
#include "trial.h"

#include <QTest>
#include <QXmlInputSource>
#include <QXmlSimpleReader>

/// Whether the document is accepted, and the record that it filled.
struct Reading
{
    explicit Reading(const QByteArray &document)
    {
        QXmlInputSource source;
        source.setData(document);
        QXmlSimpleReader reader;
        ConfigParser parser(&option);
        reader.setContentHandler(&parser);
        accepted = reader.parse(source);
    }

    DhcpOption option{QString(), nullptr};
    bool accepted;
};

class TestDefinitions : public QObject
{
    Q_OBJECT

private slots:
    void words_data()
    {
        QTest::addColumn<QByteArray>("element");
        QTest::addColumn<QStringList>("accepted");
        QTest::addColumn<QStringList>("refused");
        const auto list = [](const char *words) { return QString::fromUtf8(words).split(QLatin1Char('|')); };
        QTest::newRow("windows-type")
            << QByteArray("windows-type")
            << list("Byte|Word|Long|String|Binary|Byte Array|BYTE ARRAY|ip address|Long Integer Array|Encapsulated|"
                    "Long Array Integer")
            << list("Array|Short|IpAddress|| Byte|Byte ");
        QTest::newRow("linux-type")
            << QByteArray("linux-type")
            << list("integer 8|unsigned integer 16|signed integer 32|array of unsigned integer 8|Array Of Boolean|"
                    "array of ip-address|text|string|domain-list|ip6-address|unsigned text|"
                    "unsigned signed integer 8|")
            << list("array of text|array of STRING|array of unsigned text|encapsulate|ENCAPSULATE vendor|"
                    "array of encapsulate vendor");
        QTest::newRow("default") << QByteArray("default")
                                 << list("On|TRUE|yes|Enabled|off|False|NO|DISABLED")
                                 << list("1|0|| on| true |nope");
        QTest::newRow("dhcp-class") << QByteArray("dhcp-class")
                                    << list("normal|Standard|user-controlled|Managed|always on|ALWAYS-OFF|Always Off")
                                    << list("Always_On|Always  On||Never");
        QTest::newRow("code") << QByteArray("code") << list("42|0x2A|0X2a|052|0|300|4294967295")
                              << list("4 2|42h||-1|4294967296|0x|08");
    }

    void words()
    {
        QFETCH(QByteArray, element);
        QFETCH(QStringList, accepted);
        QFETCH(QStringList, refused);
        const auto document = [&](const QString &word) -> QByteArray {
            return "<dhcp-option> <" + element + ">" + word.toUtf8() + "</" + element + "> </dhcp-option>";
        };
        for (const QString &word : qAsConst(accepted)) {
            const CapturedErrors errors;
            QVERIFY2(Reading(document(word)).accepted, qPrintable(word));
            if (!word.isEmpty())
                QCOMPARE(errors.text(), QString());
        }
        for (const QString &word : qAsConst(refused)) {
            const CapturedErrors errors;
            QVERIFY2(!Reading(document(word)).accepted, qPrintable(word));
            const QString name = QString::fromUtf8(element);
            const QString emptyLine = word.isEmpty() ? QStringLiteral("<%1> element without a value\n").arg(name)
                                                     : QString();
            QCOMPARE(errors.text(), emptyLine + QStringLiteral("Bad <%1> element: '%2'\n").arg(name, word));
        }
    }

    void fields()
    {
        const CapturedErrors errors;
        const Reading reading("<Dhcp-Option><CODE>0x2A</CODE><name>one</name><name LANG='DE'>eins</name>"
                              "<name lang='en'>two</name><windows-name>W</windows-name>"
                              "<windows-type>byte ARRAY</windows-type><Linux-Name>n_1</Linux-Name>"
                              "<linux-type>Text</linux-type><dhcp-class>always-off</dhcp-class>"
                              "<description lang='fr_FR'>a\n  b &lt;&amp;c</description><example> x </example>"
                              "<default>no</default><standard-option>yes</standard-option>"
                              "<hide-option>on</hide-option><linux-predefined>true</linux-predefined>\n</Dhcp-Option>");
        QVERIFY(reading.accepted);
        QCOMPARE(errors.text(), QString());
        const DhcpOption &option = reading.option;
        QCOMPARE(option.standardCode, 42u);
        QCOMPARE(option.names, (QHash<QString, QString>{{QStringLiteral("en"), QStringLiteral("two")},
                                                        {QStringLiteral("DE"), QStringLiteral("eins")}}));
        QCOMPARE(option.descriptions.value(QStringLiteral("fr_FR")), QStringLiteral("a\n  b <&c"));
        QCOMPARE(option.windowsType, QStringLiteral("byte ARRAY"));
        QCOMPARE(option.linuxName, QStringLiteral("n_1"));
        QCOMPARE(option.example, QStringLiteral(" x "));
        QCOMPARE(option.dhcpClass, AlwaysOff);
        QVERIFY(!option.requestedByDefault && option.standardOption && option.hideOption && option.linuxPredefined);
    }

    void documents_data()
    {
        QTest::addColumn<QByteArray>("document");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QString>("errors");
        QTest::newRow("no text before the root's end")
            << QByteArray("<dhcp-option><code>1</code></dhcp-option>") << true
            << QStringLiteral("<dhcp-option> element without a value\n");
        QTest::newRow("empty example") << QByteArray("<dhcp-option><example/> </dhcp-option>") << true
                                       << QStringLiteral("<example> element without a value\n");
        QTest::newRow("unknown element") << QByteArray("<dhcp-option><Comment>x</Comment><code>1</code></dhcp-option>")
                                         << false << QStringLiteral("Unrecognized element 'Comment'\n");
        QTest::newRow("unknown root") << QByteArray("<options><code>1</code> </options>") << false
                                      << QStringLiteral("Unrecognized element 'options'\n");
        QTest::newRow("not well-formed") << QByteArray("<dhcp-option><code>1</code>") << false << QString();
        QTest::newRow("only the first refusal")
            << QByteArray("<dhcp-option><default>x</default><code>y</code></dhcp-option>") << false
            << QStringLiteral("Bad <default> element: 'x'\n");
        QTest::newRow("nested, prefixed") << QByteArray("<a:dhcp-option xmlns:a='u'><name>lost<a:code>7</a:code>kept"
                                                        "</name> </a:dhcp-option>")
                                          << true << QString();
    }

    void documents()
    {
        QFETCH(QByteArray, document);
        const CapturedErrors errors;
        const Reading reading(document);
        QTEST(reading.accepted, "accepted");
        QTEST(errors.text(), "errors");
        if (qstrcmp(QTest::currentDataTag(), "nested, prefixed") == 0) {
            QCOMPARE(reading.option.standardCode, 7u);
            QCOMPARE(reading.option.names.value(QStringLiteral("en")), QStringLiteral("kept"));
        }
    }

    void exceptionReport()
    {
        DhcpOption option(QString(), nullptr);
        ConfigParser parser(&option);
        const QXmlParseException exception(QStringLiteral("mess"), 3, 7, QStringLiteral("pub"), QStringLiteral("sys"));
        const CapturedErrors errors;
        QVERIFY(parser.warning(exception));
        QVERIFY(parser.error(exception));
        QVERIFY(!parser.fatalError(exception));
        QString expected;
        for (const char *heading : {"XML parse warning:", "XML parse error.", "XML parse fatal error."})
            expected += QString::fromUtf8(heading)
                + QStringLiteral("\n   mess\n   Line: 7, Column: 3\n   PublicID: 'pub'\n   SystemID: 'sys'\n");
        QCOMPARE(errors.text(), expected);
    }
};

QTEST_GUILESS_MAIN(TestDefinitions)
#include "tst_definitions.moc"
