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

const QString Conf = "/etc/dhcp/dhclient.conf";
const QString Tool = TOOL_PATH;

} // namespace

class TestDhclientEdit : public QObject
{
    Q_OBJECT

private slots:
    void init() { root = std::make_unique<TrialRoot>(); }

    void golden_data()
    {
        QTest::addColumn<QMap<QString, QByteArray>>("sections");
        QFile file(QStringLiteral(CASES_PATH));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromLatin1(file.readAll().trimmed()).replace("<CR>", "\r"); // byte by byte
        for (const QString &golden : text.split("\n\n== ").mid(1)) {
            QMap<QString, QByteArray> sections;
            for (const QString &section : golden.split("\n-- "))
                sections[section.section('\n', 0, 0)] =
                    section.section('\n', 1).append('\n').replace("<END>\n", "").toLatin1();
            QTest::newRow(qPrintable(golden.section('\n', 0, 0))) << sections;
        }
    }

    void golden()
    {
        using Sections = QMap<QString, QByteArray>;
        QFETCH(Sections, sections);
        QStringList arguments;
        for (const QString &line : QString::fromUtf8(sections["COMMANDS"]).split('\n', Qt::SkipEmptyParts))
            arguments << line.section(' ', 0, 0) << line.section(' ', 1);
        root->write("/included.conf", "option inc code 190 = text; request inc, routers;");
        root->write(Conf, sections["OLD"]);
        QCOMPARE(run(arguments), 0);
        errors.replace("kiro-dhclient-edit: note: ", "");
        if (content() != sections["EXPECTED"] || errors != sections["NOTES"])
            QFAIL(QByteArray("\n-- OLD\n" + sections["OLD"] + "-- COMMANDS\n" + sections["COMMANDS"] + "-- EXPECTED\n"
                             + sections["EXPECTED"] + sections["NOTES"] + "-- GOT\n" + content() + errors)
                      .constData());
        const struct stat before = fileStatus();
        QCOMPARE(run(arguments), 0);
        QCOMPARE(fileStatus().st_ino, before.st_ino); // where nothing changes, nothing is written
    }

    void refused_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("error");
        const auto row = [](const QByteArray &text, const QStringList &arguments, int status, const QString &error) {
            const QString title = QString::fromUtf8(text) + arguments.join(' ');
            QTest::newRow(qPrintable(title.simplified())) << text << arguments << status << error;
        };
        const auto broken = [&row](const char *text, int line, const QString &reason) {
            row(text, {"--add-request", "routers"}, 1, QStringLiteral("FILE, line %1: ").arg(line) + reason);
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
        broken("interface \"e0\" { option foo code 200 = text; } request foo;", 1, "unknown option \"foo\"");
        broken("request unknown-0;", 1, "unknown option \"unknown-0\"");
        broken("\ninclude \"/broken.conf\";\n", 2, "in \"/broken.conf\", line 2: \";\" expected");
        broken("include \"/unknown.conf\";", 1, "in \"/unknown.conf\", line 2: unknown option \"nosuch\"");
        broken("interface \"e0\" { include \"/itself.conf\"; }", 1, "/itself.conf: too many files included");
        const auto wrong = [&row](const QString &command, const QString &argument, const QString &error) {
            row("request subnet-mask;\n", {"--add-request", "ntp-servers", command, argument}, 2, error);
        };
        for (const char *name : {"", "12", "routers;request", ".routers", "\"routers\"", "space", "unknown-228"})
            wrong("--add-request", name, QStringLiteral("\"%1\" is not an option name").arg(name));
        wrong("--add-request", "foo\nr\xc3\xa4", "\"foo?r??\" is not an option name");
        wrong("--add-request", "nosuch",
              "cannot request \"nosuch\": neither the client nor the file knows such an option");
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
        root->write("/broken.conf", "timeout 5;\nrequest routers\n");
        root->write("/unknown.conf", "timeout 5;\nrequest nosuch;\n");
        root->write("/itself.conf", "include \"/itself.conf\";\n");
        root->write(Conf, text);
        QTEST(run(arguments), "status");
        QCOMPARE(QString::fromUtf8(errors), "kiro-dhclient-edit: " + error.replace("FILE", root->path(Conf)) + '\n');
        QCOMPARE(content(), text);
    }

    void types()
    {
        // clang-format off
        const QMap<bool, std::vector<const char *>> rows = {
            {true, {"boolean", "integer 8", "UNSIGNED  integer 32", "signed integer 16", "ip-address", "ip6-address",
                    "text", "string", "domain-name", "domain-list compressed", "array of { ip-address, integer 8 }",
                    "{ boolean, array of integer 32, text }"}},
            {false, {"flag", "integer", "integer 64", "unsigned", "domain-name compressed", "array ip-address",
                     "array of text", "array of domain-list", "array of array of boolean", "encapsulate dhcp",
                     "{ encapsulate x }", "{ }", "{ text, boolean }", "{ ip-address, }", "{ ip-address integer 8 }",
                     "{ { text } }", "array of { array of boolean }", "array of { ip-address, text }", "text text",
                     "text; request"}}};
        // clang-format on
        for (const bool isType : {true, false}) {
            for (const char *type : rows[isType]) {
                root->write(Conf, "timeout 5;\n");
                QVERIFY2((run({"--add-new-option", QString("foo 200 ") + type}) == 0) == isType, type);
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
        QVERIFY(QDir().mkpath(root->path("/etc/dhcp")));
        QCOMPARE(run({"--del-request", "ntp-servers"}), 0);
        QVERIFY(QDir(root->path("/etc/dhcp")).isEmpty(QDir::Files | QDir::Hidden)); // no lock is taken either
        QCOMPARE(run({"--add-request", "ntp-servers"}), 0);
        QCOMPARE(content(), QByteArray("also request ntp-servers;\n"));
        QCOMPARE(int(fileStatus().st_mode & 07777), 0644);
        QVERIFY(QFile::remove(root->path(Conf)));
        QCOMPARE(::mkfifo(qPrintable(root->path(Conf)), 0600), 0);
        QCOMPARE(run({"--add-request", "ntp-servers"}), 1);
        QCOMPARE(errors, "kiro-dhclient-edit: cannot read \"" + root->path(Conf).toUtf8() + "\": Invalid argument\n");
    }

    void linkModeAndOwner()
    {
        const QString real = "/etc/elsewhere/real.conf";
        root->write(real, "request routers;\n");
        QCOMPARE(::chmod(qPrintable(root->path(real)), 0640), 0);
        const bool isRoot = ::geteuid() == 0;
        QCOMPARE(isRoot ? ::chown(qPrintable(root->path(real)), 12, 34) : 0, 0);
        QVERIFY(QDir().mkpath(root->path("/etc/dhcp")));
        for (const QString &target : {QString("../elsewhere/real.conf"), real}) { // the absolute one below the root
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
        const QString lock = root->path("/etc/dhcp/.dhclient.conf.lock");
        const int descriptor = ::open(qPrintable(lock), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        QCOMPARE(::flock(descriptor, LOCK_EX), 0);
        QProcess tool;
        tool.start(Tool, {"--add-request", "ntp-servers"});
        QVERIFY(!tool.waitForFinished(300));
        root->write(Conf, "request subnet-mask;\n"); // what the other run did meanwhile
        ::close(descriptor);
        QVERIFY(tool.waitForFinished(-1));
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
            QVERIFY(tool.waitForFinished(-1));
            QVERIFY(content() == old || content() == changed);
        }
        QCOMPARE(run({"--add-request", "ntp-servers"}), 0); // over whatever was left
        QCOMPARE(content(), changed);
        QVERIFY(!QFile::exists(root->path("/etc/dhcp/.dhclient.conf.new")));
    }

private:
    int run(const QStringList &arguments)
    {
        QProcess process;
        process.start(Tool, arguments);
        process.waitForFinished(-1);
        output = process.readAllStandardOutput();
        errors = process.readAllStandardError();
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    QByteArray content(const QString &path = Conf) const
    {
        QFile file(root->path(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    struct stat fileStatus(const QString &path = Conf) const
    {
        struct stat result = {};
        ::stat(qPrintable(root->path(path)), &result);
        return result;
    }

    std::unique_ptr<TrialRoot> root;
    QByteArray output;
    QByteArray errors;
};

QTEST_GUILESS_MAIN(TestDhclientEdit)
#include "tst_dhclientedit.moc"
