// Holds the option definitions that the program is shipped with against its own reader and, where it is
// installed, against the DHCP client.

#include "dhcpoption.h"
#include "realclient.h"
#include "trial.h"

#include <QDir>
#include <QRegularExpression>
#include <QTest>

#include <memory>
#include <vector>

namespace {

QStringList files()
{
    const QDir directory(QStringLiteral(OPTIONS_DIRECTORY));
    return directory.entryList({QStringLiteral("*.xml")}, QDir::Files, QDir::Name);
}

std::unique_ptr<DhcpOption> read(const QString &file)
{
    return std::make_unique<DhcpOption>(QStringLiteral(OPTIONS_DIRECTORY "/") + file, nullptr);
}

/// The types of dhcp-options(5) under which a custom option can be declared. The reader lets more words pass.
bool isDeclarable(const QString &type)
{
    static const QRegularExpression declarable(QStringLiteral(
        "^((array of )?(boolean|((un)?signed )?integer (8|16|32)|ip-address)|text|string|domain-list)$"));
    return declarable.match(type).hasMatch();
}

/// A value as a person reads it, written as the client's configuration wants it.
QString literal(const QString &type, const QString &value)
{
    static const QRegularExpression octets(QStringLiteral("^[0-9a-f]{1,2}(:[0-9a-f]{1,2})+$"));
    const QString arrayOf = QStringLiteral("array of ");
    const bool isArray = type.startsWith(arrayOf);
    const QString element = isArray ? type.mid(arrayOf.size()) : type;
    if (element.startsWith(QLatin1Char('{'))) {
        const QStringList types = element.mid(1, element.size() - 2).split(QLatin1Char(','));
        const QStringList values = value.split(QLatin1Char(' '));
        QStringList written;
        for (int i = 0; i < values.size(); ++i) {
            const int field = i % types.size();
            if (field == 0 && i > 0)
                written << QStringLiteral(",");
            written << literal(types.at(field).trimmed(), values.at(i));
        }
        return written.join(QLatin1Char(' '));
    }
    if (isArray || type == QLatin1String("domain-list")) {
        QStringList written;
        for (const QString &single : value.split(QLatin1Char(' ')))
            written << (isArray ? single : QLatin1Char('"') % single % QLatin1Char('"'));
        return written.join(QStringLiteral(", "));
    }
    const bool isText = type == QLatin1String("text")
                        || (type == QLatin1String("string") && !octets.match(value).hasMatch());
    return isText ? QLatin1Char('"') % value % QLatin1Char('"') : value;
}

} // namespace

class TestOptionsData : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const QStringList all = files();
        QVERIFY(!all.isEmpty());
        for (const QString &file : all) {
            const CapturedErrors errors;
            try {
                m_options.push_back(read(file));
            } catch (DhcpOption::ExceptionType) {
                QFAIL(qPrintable(errors.text()));
            }
            if (!errors.text().isEmpty())
                QFAIL(qPrintable(file + QStringLiteral(": ") + errors.text()));
        }
    }

    void definition_data()
    {
        QTest::addColumn<int>("index");
        const QStringList all = files();
        for (int i = 0; i < all.size(); ++i)
            QTest::newRow(qPrintable(all.at(i))) << i;
    }

    void definition()
    {
        QFETCH(int, index);
        const DhcpOption &option = *m_options.at(static_cast<size_t>(index));
        const QString code = QStringLiteral("%1").arg(option.standardCode, 3, 10, QLatin1Char('0'));
        const QString fileName = code % QLatin1Char('-') % option.linuxName % QLatin1String(".xml");
        QCOMPARE(files().at(index), fileName);
        // The client refuses 0 and 255, and sends anything beyond without its upper bits.
        QVERIFY(option.standardCode >= 1 && option.standardCode <= 254);
        const QRegularExpression name(QStringLiteral("^[a-z][a-z0-9]*(-[a-z0-9]+)*$"));
        QVERIFY(name.match(option.linuxName).hasMatch());
        QVERIFY2(option.linuxPredefined || isDeclarable(option.linuxType), qPrintable(option.linuxType));
        QVERIFY(!option.linuxPredefined || option.standardOption);
        QVERIFY(!option.linuxType.isEmpty());
        QVERIFY(option.windowsName.isEmpty() || option.windowsType != QLatin1String("Unknown"));
        QVERIFY(option.dhcpClass != AlwaysOff || !option.requestedByDefault);
        QVERIFY(option.dhcpClass != AlwaysOn || option.requestedByDefault);
        QVERIFY(!option.example.isEmpty());

        QStringList texts = {option.windowsName, option.windowsType, option.linuxType, option.example};
        for (const char *language : {"en", "de", "fr", "es"}) {
            const QString key = QString::fromLatin1(language);
            QVERIFY2(!option.names.value(key).isEmpty(), language);
            QVERIFY2(option.descriptions.value(key).endsWith(QLatin1Char('.')), language);
            texts << option.names.value(key) << option.descriptions.value(key);
        }
        QCOMPARE(option.names.size(), 4);
        QCOMPARE(option.descriptions.size(), 4);
        for (const QString &text : qAsConst(texts)) {
            // QString::simplified would also take the no-break spaces that French typography wants.
            const QRegularExpression stray(QStringLiteral("^ | $|  |[\\t\\r\\n]"));
            QVERIFY2(!stray.match(text).hasMatch(), qPrintable(text));
        }
    }

    void nothingTwice()
    {
        QSet<QString> names;
        QSet<QString> codes;
        for (const auto &option : m_options) {
            // The client's names are the same in any case of letters.
            const QString name = option->linuxName.toLower();
            QVERIFY2(!names.contains(name), qPrintable(name));
            names << name;
            // Once each among the client's own and the declared ones: the client has a name of its own for
            // 114, but not for what that code means today.
            const QString code = QString::number(option->standardCode)
                                 + (option->linuxPredefined ? QString() : QStringLiteral(" declared"));
            QVERIFY2(!codes.contains(code), qPrintable(code));
            codes << code;
        }
    }

    /// Out of the definitions the program asks for what Debian's dhclient.conf asks for, no more and no less.
    void defaults()
    {
        QStringList requested;
        for (const auto &option : m_options) {
            if (option->requestedByDefault)
                requested << option->linuxName;
        }
        requested.sort();
        const QString debian = QStringLiteral(
            "broadcast-address domain-name domain-name-servers domain-search host-name interface-mtu "
            "netbios-name-servers netbios-scope ntp-servers rfc3442-classless-static-routes routers "
            "subnet-mask time-offset");
        QCOMPARE(requested.join(QLatin1Char(' ')), debian);
    }

    void namesOfClient()
    {
        if (!m_client.isInstalled())
            QSKIP("the DHCP client is not installed");
        QSet<QString> predefined;
        QSet<QString> names = m_client.words();
        for (const auto &option : m_options) {
            names << option->linuxName;
            if (option->linuxPredefined)
                predefined << option->linuxName;
        }
        QStringList known = m_client.known(names).values();
        // The client makes these up for any number.
        known = known.filter(QRegularExpression(QStringLiteral("^(?!unknown-\\d+$)")));
        known.sort();
        QStringList defined = predefined.values();
        defined.sort();
        QCOMPARE(known, defined);
    }

    void declarationsAndExamples()
    {
        if (!m_client.isInstalled())
            QSKIP("the DHCP client is not installed");
        QVERIFY(!m_client.complaints("supersede subnet-mask \"a\";\n").isEmpty());
        QByteArray configuration = declarations();
        for (const auto &option : m_options)
            configuration += "supersede " + option->linuxName.toUtf8() + ' '
                             + literal(option->linuxType, option->example).toUtf8() + ";\n";
        QCOMPARE(QString::fromUtf8(m_client.complaints(configuration)), QString());
    }

    void codesOnTheWire()
    {
        if (!m_client.isInstalled())
            QSKIP("the DHCP client is not installed");
        QStringList names;
        QList<int> codes;
        for (const auto &option : m_options) {
            names << option->linuxName;
            codes << static_cast<int>(option->standardCode);
        }
        QString reason;
        const QList<int> sent = m_client.requestedCodes(
            declarations() + "request " + names.join(QStringLiteral(", ")).toLatin1() + ";\n", reason);
        if (!reason.isEmpty())
            QSKIP(qPrintable(reason));
        QCOMPARE(sent, codes);
    }

private:
    QByteArray declarations() const
    {
        QByteArray text;
        for (const auto &option : m_options) {
            if (!option->linuxPredefined)
                text += "option " + option->linuxName.toLatin1() + " code "
                        + QByteArray::number(option->standardCode) + " = " + option->linuxType.toLatin1()
                        + ";\n";
        }
        return text;
    }

    TrialRoot m_root; // so that no value and no stored code of the machine is read
    std::vector<std::unique_ptr<DhcpOption>> m_options;
    RealClient m_client;
};

QTEST_GUILESS_MAIN(TestOptionsData)
#include "tst_options_data.moc"
