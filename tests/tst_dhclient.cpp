// The editor's core: golden cases of old text, commands and new text; what the client takes, and what not.

#include "dhclient/golden.h"
#include "edit.h"
#include "knownoptions.h"
#include "realclient.h"

#include <QFile>
#include <QTest>

using namespace DhclientConf;

namespace {

QString u(const char *text)
{
    return QString::fromUtf8(text);
}

std::optional<std::string> included(const std::string &path)
{
    if (path == "/included.conf")
        return "option inc code 190 = text; request inc, routers;";
    if (path == "/plain.conf")
        return "request routers, ntp-servers;";
    if (path == "/outer.conf")
        return "include \"/inner.conf\"; interface \"e0\" { request routers; }";
    if (path == "/number.conf")
        return "also request unknown-200;";
    if (path == "/copies.conf")
        return "request ntp-servers, routers; interface \"e0\" { }";
    if (path == "/inner.conf")
        return "require routers;";
    if (path == "/declares.conf")
        return "option inc code 190 = text;";
    if (path == "/brace.conf")
        return "request routers; }";
    if (path == "/broken.conf")
        return "request routers;\nrequest ntp-servers\n";
    if (path == "/itself.conf")
        return "include \"/itself.conf\";";
    return std::nullopt;
}

Result edited(const QByteArray &text, const QByteArray &commands)
{
    return edit(text.toStdString(), commandsOf(commands), included);
}

QByteArray notesOf(const Result &result)
{
    QByteArray notes;
    for (const std::string &note : result.notes)
        notes += QByteArray::fromStdString(note) + '\n';
    return notes;
}

} // namespace

class TestDhclient : public QObject
{
    Q_OBJECT

private slots:
    void golden_data()
    {
        QTest::addColumn<int>("index");
        const QVector<Golden> cases = allGoldens();
        for (int i = 0; i < cases.size(); ++i)
            QTest::newRow(cases[i].title.constData()) << i;
    }

    void golden()
    {
        QFETCH(int, index);
        const Golden golden = allGoldens().at(index);
        const Result result = edited(golden.old, golden.commands);
        QByteArray error;
        if (result.status != Result::Done)
            error = QByteArray::number(result.status == Result::Broken ? 1 : 2)
                + (result.line ? " line " + QByteArray::number(result.line) + ':' : QByteArray()) + ' '
                + QByteArray::fromStdString(result.error) + '\n';
        const QByteArray text = QByteArray::fromStdString(result.text);
        if (error != golden.error || text != golden.expected || notesOf(result) != golden.notes) {
            const QByteArray shown = "\n-- OLD\n" + golden.old + "-- COMMANDS\n" + golden.commands + "-- EXPECTED\n"
                + golden.expected + golden.error + golden.notes + "-- GOT\n" + text + error + notesOf(result);
            QFAIL(shown.constData());
        }
        if (result.status == Result::Done) {
            const Result again = edited(text, golden.commands);
            QCOMPARE(QByteArray::fromStdString(again.text), text);
        }
    }

    void goldenByTheClient()
    {
        const RealClient client;
        if (!client.isInstalled())
            QSKIP("no dhclient here");
        QVERIFY(!client.complaints("request nosuch;").isEmpty());
        for (const Golden &golden : allGoldens()) {
            if (golden.error.isEmpty() && !golden.expected.contains("include"))
                QCOMPARE(client.complaints(golden.expected), QByteArray());
        }
    }

    // Every name that the client is said to know, and every type, asked of the client itself.
    void knowledgeByTheClient()
    {
        const RealClient client;
        if (!client.isInstalled())
            QSKIP("no dhclient here");
        QByteArray text;
        int known = 0;
        for (int code = 1; code < 255; ++code) {
            const std::string_view name = knownName(code);
            if (name.empty())
                continue;
            ++known;
            text += "also request " + QByteArray(name.data(), int(name.size())) + ";\n";
        }
        QVERIFY(known > 100);
        for (const std::string_view name : BuiltInRequests)
            text += "require " + QByteArray(name.data(), int(name.size())) + ";\n";
        QCOMPARE(client.complaints(text), QByteArray());
        for (const Row &row : rows()) {
            const QByteArray declaration = QByteArray("option space sp; option foo code 200 = ") + row.type + ';';
            QVERIFY2(client.complaints(declaration).isEmpty() == row.good, row.type);
        }
    }

    void types()
    {
        for (const Row &row : rows()) {
            const std::string foo = std::string("foo 200 ") + row.type;
            const Result result = edit("option space sp;", {{Command::AddNewOption, foo}}, included);
            QVERIFY2((result.status == Result::Done) == row.good, row.type);
        }
    }

    void arguments_data()
    {
        QTest::addColumn<QByteArray>("command");
        const char *const commands[] = {
            "--add-request ", "--add-request 12", "--add-request foo bar", "--add-request routers;request",
            "--add-request routers\n", "--add-request routers#", "--add-request .routers", "--add-request dhcp6.",
            "--add-request a.b.c", "--add-request \"routers\"", "--add-request r\xe4uter", "--add-request unknown-228",
            "--del-request routers, host-name", "--add-request space", "--add-new-option foo",
            "--add-new-option foo 200",
            "--add-new-option foo 200 ", "--add-new-option foo 0 text", "--add-new-option foo 255 text",
            "--add-new-option foo -1 text", "--add-new-option foo 0x10 text", "--add-new-option foo 010 text",
            "--add-new-option foo 4294967496 text", "--add-new-option foo 200 text; request routers",
            "--add-new-option foo 200 text # x", "--add-new-option foo 200 text }", "--add-new-option space 200 text",
            "--add-new-option sp.x 200 text", "--del-new-option foo 300 text", "--del-new-option foo 200 nothing",
            "--add-new-option foo 200 encapsulate dhcp", "--add-new-option foo 200 encapsulate fqdn",
            "--add-new-option unknown-200 200 text", "--add-new-option fqdn.unknown-x 200 text"};
        for (const char *command : commands)
            QTest::newRow(QByteArray(command).simplified().constData()) << QByteArray(command);
    }

    void arguments()
    {
        QFETCH(QByteArray, command);
        const int blank = command.indexOf(' ');
        std::vector<Command> commands = commandsOf(command.left(blank) + " x");
        commands.front().argument = command.mid(blank + 1).toStdString();
        const Result result = edit("request subnet-mask;\n", commands, included);
        QCOMPARE(int(result.status), int(Result::Refused));
        QVERIFY(!result.error.empty());
        QCOMPARE(result.error.find('\n'), std::string::npos);
    }

    void broken_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("line");
        const auto row = [](const char *text, int line) { QTest::newRow(text) << QByteArray(text) << line; };
        row("timeout 5;\nrequest routers\ntimeout 6;\n", 2);
        row("send host-name \"x\"\nrequest routers;\n", 1);
        row("timeout 5\nretry 6;\n", 1);
        row("supersede ip-forwarding true\non commit { }\n", 1);
        row("send host-name = gethostname()\nsend user-class \"x\";\n", 1);
        row("\n\ninterface \"e0\" {\n timeout 3;\n", 4);
        row("}\n", 1);
        row("request routers;;\n", 1);
        row("option space foo hash size 99999999999;\n", 1); // the client would not end
        row("interface \"e0\" { };\n", 1);
        row("\nsend host-name \"x;\nrequest routers;\n", 2);
        row("send host-name \"\\12\";\n", 1);
        row("request routers ntp-servers;\n", 1);
        row("request , routers;\n", 1);
        row("request \"routers\";\n", 1);
        row("also send host-name \"x\";\n", 1);
        row("nonsense 5;\n", 1);
        row("option foo code 200 = nonsense;\n", 1);
        row("option foo 200 = text;\n", 1);
        row("interface \"e0\" { option foo code 200 = text; }\n", 1);
        row("interface e0 { }\n", 1);
        row("if exists routers { request ntp-servers; }\n", 1);
        row("key k { algorithm hmac-md5; }\n", 1);
        row("send nosuch \"x\";\n", 1);
        row("request foo;\noption foo code 200 = text;\n", 1);
        row("supersede routers \"x\";\nrequest ntp-servers;\n", 1);
        row("option foo code 200 = integer 8;\nsend foo 1.2.3.4;\n", 2);
        row("# caf\xff\nrequest routers;\n", 1);
        row("\n\ninclude \"/broken.conf\";\n", 3);
        row("include \"/itself.conf\";\n", 1);
        row("include \"/brace.conf\";\n", 1);
        row("interface \"e0\" {\n include \"/brace.conf\"; }\n", 2);
        row("interface \"e0\" {\n include \"/included.conf\"; }\n", 2); // a declaration inside the block
        row("if ((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((", 1);
    }

    void broken()
    {
        QFETCH(QByteArray, text);
        const Result result = edited(text, "--add-request routers\n");
        QCOMPARE(int(result.status), int(Result::Broken));
        QTEST(result.line, "line");
        QVERIFY(!result.error.empty());
    }

    // Each line of the table, and what the client itself says of it.
    void statements()
    {
        QFile file(u(GOLDEN_PATH "/statements.txt"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const RealClient client;
        int lines = 0;
        while (!file.atEnd()) {
            const QByteArray line = file.readLine();
            if (line.startsWith('#'))
                continue;
            ++lines;
            const QByteArray text = line.mid(4);
            const bool good = line.startsWith("yes ");
            QVERIFY2(good != line.startsWith("no  "), line.constData());
            QVERIFY2((edited(text, "--add-request routers\n").status == Result::Done) == good, line.constData());
            if (client.isInstalled())
                QVERIFY2(client.complaints(text).isEmpty() == good, line.constData());
        }
        QVERIFY(lines > 100);
    }

    void accepted()
    {
        // The sample of dhclient.conf(5) and what else its pages show.
        const QByteArray text =
            "timeout 60; retry 60; reboot 10; select-timeout 5; initial-interval 2; initial-delay 3;\n"
            "reject 192.33.137.209, 10.0.0.0/8;\nlease-id-format hex; db-time-format local;\n"
            "interface \"ep0\" {\n  send host-name \"andare.example.com\";\n"
            "  hardware ethernet 00:a0:24:ab:fb:9c;\n  send dhcp-client-identifier 1:0:a0:24:ab:fb:9c;\n"
            "  supersede domain-search \"example.com\", \"rc.example.org\";\n  prepend domain-name-servers 127.0.0.1;\n"
            "  script \"/sbin/dhclient-script\";\n  media \"media 10baseT/UTP\", \"media 10base2/BNC\";\n}\n"
            "alias { interface \"ep0\"; fixed-address 192.5.5.213; option subnet-mask 255.255.255.255; }\n"
            "lease { interface \"eth0\"; fixed-address 192.33.137.200; medium \"link0 link1\"; "
            "renew 2 2000/1/12 00:00:01; }\n"
            "send fqdn.encoded on; send fqdn.fqdn \"grosse.example.com.\"; also request fqdn, dhcp6.fqdn;\n"
            "send host-name = concat(option domain-name, \"x\", substring(hardware, 1, 6));\n"
            "if not exists routers and (option host-name = \"a\" or known) { set x = 1:2; } elsif static { }\n"
            "else if option routers ~= \"x\" { log(info, \"x\"); execute(\"/bin/true\", \"a\"); } else { break; }\n"
            "on commit or expiry { unset x; option host-name \"y\"; }\n"
            "switch (option host-name) { case \"a\": set x = \"a\"; break; default: set x = \"b\"; }\n"
            "key \"k\" { algorithm hmac-md5; secret abcd==; };\nzone example.org. { primary 127.0.0.1; key k; }\n"
            "option space SUNW code width 1 length width 1 hash size 3;\noption SUNW.name code 3 = text;\n"
            "option contrived-001 code 201 = { boolean, integer 32, text };\n"
            "send contrived-001 on 1772 \"contrivance\";\n"
            "supersede dhcp6.name-servers 3ffe:bbbb::1, ::1; send dhcp6.rapid-commit; vendor option space SUNW;\n";
        const Result result = edited(text, "--add-request routers\n");
        QCOMPARE(QByteArray::fromStdString(result.error), QByteArray());
        QCOMPARE(QByteArray::fromStdString(result.text), text);
        const RealClient client;
        if (client.isInstalled())
            QCOMPARE(client.complaints(text), QByteArray());
    }

private:
    struct Row
    {
        const char *type;
        bool good;
    };

    static std::vector<Row> rows()
    {
        static const QByteArray longest = "{ " + QByteArray("array of boolean, ").repeated(63) + "boolean, text }";
        static const QByteArray tooLong = "{ " + QByteArray("array of boolean, ").repeated(64) + "text }";
        return {{"boolean", true}, {"integer 8", true}, {"signed integer 16", true}, {"UNSIGNED integer 32", true},
                {"ip-address", true}, {"ip6-address", true}, {"text", true}, {"string", true}, {"domain-name", true},
                {"domain-list", true}, {"domain-list compressed", true}, {"encapsulate sp", true},
                {"array of ip-address", true}, {"array of boolean", true}, {"array of { ip-address, integer 8 }", true},
                {"{ boolean, integer 32, text }", true}, {"{ array of ip-address, text }", true},
                {"{ encapsulate sp }", true}, {"{ domain-list compressed }", true},
                {"flag", false}, {"uint8", false}, {"integer", false}, {"integer 64", false}, {"unsigned", false},
                {"domain-name compressed", false}, {"encapsulate nosuch", false}, {"array ip-address", false},
                {"array of text", false}, {"array of domain-name", false}, {"array of array of boolean", false},
                {"array of encapsulate sp", false}, {"{ }", false}, {"{ text, boolean }", false},
                {"{ ip-address, }", false}, {"{ ip-address integer 8 }", false}, {"{ { text } }", false},
                {"array of { ip-address, text }", false}, {"array of { array of boolean }", false},
                {"{ array of { ip-address } }", false}, {"{ encapsulate sp, text }", false}, {"text text", false},
                {longest.constData(), true}, {tooLong.constData(), false}};
    }
};

QTEST_GUILESS_MAIN(TestDhclient)
#include "tst_dhclient.moc"
