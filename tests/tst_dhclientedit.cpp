// The built edit tool against a root of its own: golden cases, statuses, every byte of output, what happens to files.

#include "trial.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <memory>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString Conf = QStringLiteral("/etc/dhcp/dhclient.conf");
const QString Tool = QStringLiteral(TOOL_PATH);

/// A case of cases.txt: its sections by name.
struct Golden
{
    QByteArray title;
    QMap<QByteArray, QByteArray> sections;
};

QVector<Golden> goldens()
{
    QFile file(QStringLiteral(CASES_PATH));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no %s", CASES_PATH);
    QVector<Golden> result;
    QByteArray section;
    while (!file.atEnd()) {
        QByteArray line = file.readLine();
        if (line.startsWith("== "))
            result.append(Golden{line.mid(3).trimmed(), {}});
        else if (line.startsWith("-- "))
            section = line.mid(3).trimmed();
        else if (!result.isEmpty())
            result.last().sections[section] += line.replace("<CR>", "\r");
    }
    for (Golden &golden : result) {
        for (QByteArray &text : golden.sections) {
            if (text.endsWith("\n\n")) // the blank line before the next case
                text.chop(1);
            text.replace("<END>\n", "");
        }
    }
    return result;
}

QStringList argumentsOf(const QByteArray &commands)
{
    QStringList arguments;
    for (const QByteArray &line : commands.split('\n')) {
        const int blank = line.indexOf(' ');
        if (blank > 0)
            arguments << QString::fromUtf8(line.left(blank)) << QString::fromUtf8(line.mid(blank + 1));
    }
    return arguments;
}

} // namespace

class TestDhclientEdit : public QObject
{
    Q_OBJECT

private slots:
    void init() { root = std::make_unique<TrialRoot>(); }

    void golden_data()
    {
        QTest::addColumn<int>("index");
        const QVector<Golden> cases = goldens();
        for (int i = 0; i < cases.size(); ++i)
            QTest::newRow(cases[i].title.constData()) << i;
    }

    void golden()
    {
        QFETCH(int, index);
        const QMap<QByteArray, QByteArray> sections = goldens().at(index).sections;
        const QStringList arguments = argumentsOf(sections["COMMANDS"]);
        root->write(QStringLiteral("/included.conf"), "option inc code 190 = text; request inc, routers;");
        root->write(Conf, sections["OLD"]);
        const int status = run(arguments);
        errors.replace("kiro-dhclient-edit: ", "").replace("note: ", "").replace(
            QFile::encodeName(root->path(Conf)), "FILE");
        const QByteArray expected = status == 0 ? sections["EXPECTED"] : sections["OLD"];
        const QByteArray said = status == 0 ? sections["NOTES"] : sections["ERROR"];
        const QByteArray got = status == 0 ? errors : QByteArray::number(status) + ' ' + errors;
        if (content() != expected || got != said) {
            const QByteArray shown = "\n-- OLD\n" + sections["OLD"] + "-- COMMANDS\n" + sections["COMMANDS"]
                + "-- EXPECTED\n" + expected + said + "-- GOT\n" + content() + got;
            QFAIL(shown.constData());
        }
        const struct stat before = fileStatus();
        QCOMPARE(run(arguments), status);
        QCOMPARE(fileStatus().st_ino, before.st_ino); // where nothing changes, nothing is written
    }

    void refused_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("error");
        const auto row = [](const char *text, const QStringList &arguments, int status, const QString &error) {
            QTest::addRow("%s %s", text, qPrintable(arguments.join(u' '))) << QByteArray(text) << arguments << status
                                                                          << error;
        };
        const auto broken = [&row](const char *text, int line, const char *reason) {
            row(text, {"--add-request", "routers"}, 1,
                QStringLiteral("FILE, line %1: %2").arg(QString::number(line), QString::fromUtf8(reason)));
        };
        broken("timeout 5;\n\nrequest routers\ntimeout 6;\n", 3, "\";\" expected");
        broken("\nsend host-name \"x;\nrequest routers;\n", 2, "a string without its closing quote");
        broken("interface \"e0\" {\n timeout 3;\n", 2, "\"}\" expected");
        broken("interface \"e0\" {\n timeout 3 }\n", 2, "\";\" expected");
        broken("if exists routers {\n timeout 3;", 2, "\"}\" expected");
        broken("timeout 3;\n}", 2, "a \"}\" without its \"{\"");
        broken("timeout 3", 1, "\";\" expected");
        broken("request routers,\n nosuch;", 2, "unknown option \"nosuch\"");
        broken("option foo code 200 = array of text; require foo;", 1, "unknown option \"foo\"");
        broken("\ninclude \"/broken.conf\";\n", 2, "in \"/broken.conf\", line 2: \";\" expected");
        broken("include \"/unknown.conf\";", 1, "in \"/unknown.conf\", line 2: unknown option \"nosuch\"");
        broken("interface \"e0\" { include \"/itself.conf\"; }", 1, "/itself.conf: too many files included");
        const auto wrong = [&row](const QString &command, const QString &argument, const QString &error) {
            row("request subnet-mask;\n", {"--add-request", "ntp-servers", command, argument}, 2, error);
        };
        for (const char *name : {"", "12", "foo\n", "routers;request", ".routers", "\"routers\"", "r\xc3\xa4", "space",
                                 "unknown-228"}) {
            const QString shown = QString::fromUtf8(name).toUtf8().replace('\n', '?').replace("\xc3\xa4", "??");
            wrong("--add-request", name, '"' + shown + "\" is not an option name");
        }
        wrong("--add-request", "nosuch", "cannot request \"nosuch\": neither the client nor the file knows such an option");
        wrong("--add-new-option", "a.b 1 text", "\"a.b\" belongs to an option space other than DHCPv4's");
        for (const char *code : {"0", "255", "-1", "0x10", "010", "4294967496"})
            wrong("--add-new-option", QStringLiteral("foo %1 text").arg(code),
                  QStringLiteral("\"%1\" is not an option code from 1 to 254, in \"foo %1 text\"").arg(code));
        wrong("--add-new-option", "foo 200", "\"\" is not an option type, in \"foo 200\"");
        row("request routers;", {"--add-request"}, 2, "--add-request needs an argument");
        row("request routers;", {"routers"}, 2, "unknown argument \"routers\", see --help");
    }

    void refused()
    {
        QFETCH(QByteArray, text);
        QFETCH(QStringList, arguments);
        QFETCH(QString, error);
        root->write(QStringLiteral("/broken.conf"), "timeout 5;\nrequest routers\n");
        root->write(QStringLiteral("/unknown.conf"), "timeout 5;\nrequest nosuch;\n");
        root->write(QStringLiteral("/itself.conf"), "include \"/itself.conf\";\n");
        root->write(Conf, text);
        QTEST(run(arguments), "status");
        QCOMPARE(QString::fromUtf8(errors), "kiro-dhclient-edit: " + error.replace("FILE", root->path(Conf)) + '\n');
        QCOMPARE(content(), text);
    }

    void types()
    {
        const struct { bool isType; std::vector<const char *> types; } rows[] = {
            {true, {"boolean", "integer 8", "UNSIGNED  integer 32", "signed integer 16", "ip-address", "ip6-address",
                    "text", "string", "domain-name", "domain-list compressed", "array of { ip-address, integer 8 }",
                    "{ boolean, array of integer 32, text }"}},
            {false, {"flag", "integer", "integer 64", "unsigned", "domain-name compressed", "array ip-address",
                     "array of text", "array of domain-list", "array of array of boolean", "encapsulate dhcp", "{ encapsulate x }",
                     "{ }", "{ text, boolean }", "{ ip-address, }", "{ ip-address integer 8 }", "{ { text } }",
                     "array of { array of boolean }", "array of { ip-address, text }", "text text", "text; request"}}};
        for (const auto &row : rows) {
            for (const char *type : row.types) {
                root->write(Conf, "timeout 5;\n");
                QVERIFY2((run({"--add-new-option", QStringLiteral("foo 200 ") + type}) == 0) == row.isType, type);
            }
        }
    }

    void helpAndVersion()
    {
        QCOMPARE(run({"--help"}), 0);
        QVERIFY(output.startsWith("Usage: kiro-dhclient-edit [COMMAND ARGUMENT]...\n") && errors.isEmpty());
        QCOMPARE(run({"--version", "--add-request", "x"}), 0);
        QVERIFY(output.startsWith("kiro-dhclient-edit 0.") && errors.isEmpty());
    }

    void missingAndUnreadable()
    {
        QCOMPARE(run({"--add-request", "ntp-servers"}), 1);
        QVERIFY2(errors.endsWith("No such file or directory\n") && errors.count('\n') == 1, errors.constData());
        QVERIFY(QDir().mkpath(root->path(QStringLiteral("/etc/dhcp"))));
        QCOMPARE(run({"--del-request", "ntp-servers"}), 0);
        QVERIFY(!QFile::exists(root->path(Conf)));
        QCOMPARE(run({"--add-request", "ntp-servers"}), 0);
        QCOMPARE(content(), QByteArray("also request ntp-servers;\n"));
        QCOMPARE(int(fileStatus().st_mode & 07777), 0644);
        QVERIFY(QFile::remove(root->path(Conf)));
        QCOMPARE(::mkfifo(QFile::encodeName(root->path(Conf)).constData(), 0600), 0);
        QCOMPARE(run({"--add-request", "ntp-servers"}), 1);
        QCOMPARE(errors, "kiro-dhclient-edit: cannot read \"" + root->path(Conf).toUtf8() + "\": Invalid argument\n");
    }

    void linkModeAndOwner()
    {
        const QString real = QStringLiteral("/etc/elsewhere/real.conf");
        root->write(real, "request routers;\n");
        const QByteArray path = QFile::encodeName(root->path(real));
        QCOMPARE(::chmod(path.constData(), 0640), 0);
        const bool isRoot = ::geteuid() == 0;
        QCOMPARE(isRoot ? ::chown(path.constData(), 12, 34) : 0, 0);
        QVERIFY(QDir().mkpath(root->path(QStringLiteral("/etc/dhcp"))));
        for (const QString &target : {QStringLiteral("../elsewhere/real.conf"), real}) { // the absolute one below the root
            QFile::remove(root->path(Conf));
            QVERIFY(QFile::link(target, root->path(Conf)));
            root->write(real, "request routers;\n");
            QCOMPARE(run({"--add-request", "ntp-servers"}), 0);
            QVERIFY(QFileInfo(root->path(Conf)).isSymLink());
            QCOMPARE(content(real), QByteArray("request routers, ntp-servers;\n"));
            QCOMPARE(int(fileStatus(real).st_mode & 07777), 0640);
            QVERIFY(!isRoot || (fileStatus(real).st_uid == 12 && fileStatus(real).st_gid == 34));
        }
    }

    void waitsForTheLock()
    {
        root->write(Conf, "request routers;\n");
        const QByteArray lock = QFile::encodeName(root->path(QStringLiteral("/etc/dhcp/.dhclient.conf.lock")));
        const int descriptor = ::open(lock.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        QCOMPARE(::flock(descriptor, LOCK_EX), 0);
        QProcess tool;
        tool.start(Tool, {"--add-request", "ntp-servers"});
        QVERIFY(!tool.waitForFinished(300));
        root->write(Conf, "request subnet-mask;\n"); // what the other run did meanwhile
        ::close(descriptor);
        QVERIFY(tool.waitForFinished());
        QCOMPARE(content(), QByteArray("request subnet-mask, ntp-servers;\n"));
    }

    void killed()
    {
        QByteArray old = "request routers;\n" + QByteArray("# filler\n").repeated(20000);
        const QByteArray changed = "request routers, ntp-servers;\n" + old.mid(17);
        for (int i = 0; i < 40; ++i) {
            root->write(Conf, old);
            QProcess tool;
            tool.start(Tool, {"--add-request", "ntp-servers"});
            QVERIFY(tool.waitForStarted());
            ::usleep(static_cast<useconds_t>(i * 400));
            tool.kill();
            QVERIFY(tool.waitForFinished());
            QVERIFY(content() == old || content() == changed);
        }
        QCOMPARE(run({"--add-request", "ntp-servers"}), 0); // over whatever was left
        QCOMPARE(content(), changed);
        QVERIFY(!QFile::exists(root->path(QStringLiteral("/etc/dhcp/.dhclient.conf.new"))));
    }

private:
    int run(const QStringList &arguments)
    {
        QProcess process;
        process.start(Tool, arguments);
        if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
            return -1;
        output = process.readAllStandardOutput();
        errors = process.readAllStandardError();
        return process.exitCode();
    }

    QByteArray content(const QString &path = Conf) const
    {
        QFile file(root->path(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    struct stat fileStatus(const QString &path = Conf) const
    {
        struct stat result = {};
        ::stat(QFile::encodeName(root->path(path)).constData(), &result);
        return result;
    }

    std::unique_ptr<TrialRoot> root;
    QByteArray output;
    QByteArray errors;
};

QTEST_GUILESS_MAIN(TestDhclientEdit)
#include "tst_dhclientedit.moc"
