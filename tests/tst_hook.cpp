// The client's exit hook: what it makes of an event, and where it writes that.

#include "dhcpoption.h"
#include "hooktest.h"

#include <QElapsedTimer>

#include <sys/file.h>
#include <sys/stat.h>

#include <vector>

class TestHook : public HookTest
{
    Q_OBJECT

private slots:
    void value_data()
    {
        QTest::addColumn<QByteArray>("passed"); // as the client passes it
        QTest::addColumn<QString>("shown");
        const auto row = [](const char *name, const char *passed, const char *shown) {
            QTest::newRow(name) << QByteArray(passed) << u(shown);
        };
        const auto same = [&row](const char *name, const char *text) { row(name, text, text); };
        same("address list", "192.0.2.1 192.0.2.2");
        same("raw data", "0:1:ff:41");
        same("empty", "");
        same("comment sign", "#text");
        same("blanks at both ends", "  text ");
        same("assignment", "a=b");
        same("path", "../../../../etc/passwd");
        same("unescaped UTF-8", "gr\xC3\xBC\xC3\x9F");
        row("single quotes at both ends", "\\'a\\'", "'a'");
        row("double quotes at both ends", "\\\"a\\\"", "\"a\"");
        row("one quote", "\\'", "'");
        row("command", "\\$(touch ran)\\`touch ran\\`\\';touch ran;\\' \\| touch ran \\& x",
            "$(touch ran)`touch ran`';touch ran;' | touch ran & x");
        row("unescaped command", "$(touch ran)`touch ran`';touch ran;'\"", "$(touch ran)`touch ran`';touch ran;'\"");
        row("backslash", "C:\\\\x\\\\012", "C:\\x\\012");
        row("backslash at the end", "a\\", "a\\");
        row("no escape of the client's", "\\q\\12\\777", "\\q\\12\\777");
        row("two, three, four bytes", "\\303\\244\\342\\202\\254\\360\\237\\230\\200", "\u00E4\u20AC\U0001F600");
        row("line ends", "a\\012b\\015c", "a\\012b\\015c");
        row("unescaped line ends", "a\nnew_x='y'\r\n", "a\\012new_x='y'\\015\\012");
        row("other line ends", "\\302\\205\\342\\200\\250", "\\302\\205\\342\\200\\250");
        row("tab, escape, delete, zero", "\\011\\033[2J\\177\\000x", "\\011\\033[2J\\177\\000x");
        row("direction", "\\342\\200\\256x\\342\\201\\246", "\\342\\200\\256x\\342\\201\\246");
        row("invisible", "\\357\\273\\277a\\342\\200\\213", "\\357\\273\\277a\\342\\200\\213");
        row("joiner", "\\342\\200\\214", "\u200C");
        row("no UTF-8", "\\377a\\200\\303", "\\377a\\200\\303");
        row("overlong", "\\300\\257\\340\\200\\257", "\\300\\257\\340\\200\\257");
        row("surrogate", "\\355\\240\\200", "\\355\\240\\200");
        row("beyond Unicode", "\\364\\220\\200\\200", "\\364\\220\\200\\200");
        QByteArray binary;
        for (int i = 0; i < 255; ++i)
            binary += '\\' + QByteArray::number(0200 + i % 0100, 8);
        QTest::newRow("255 bytes of no text") << binary << QString::fromLatin1(binary);
    }

    void value()
    {
        QFETCH(QByteArray, passed);
        run("BOUND", "eth0", "2", {{"new_shown", passed}});
        QCOMPARE(m_errors, QByteArray());
        const DhcpOption option(m_root->define(u("shown"), 200, Custom), nullptr);
        QTEST(option.currentValue, "shown");
        QCOMPARE(files(interfaceFolder("eth0")).keys(), QStringList(u("shown")));
        QVERIFY(!QFile::exists(m_root->path(u("/ran"))));
    }

    void names()
    {
        run("BOUND", "eth0", "2",
            {{"new_domain_name_servers", "a"},
             {"new_unknown_228", "b"},
             {"new_x-y", "c"},
             {"new_interface_mtu", "500"},
             {"new_domain_search", "d"},
             {"new_domain_name", "e"},
             // set by the client, yet no options
             {"new_ip_address", "192.0.2.9"},
             {"new_expiry", "1"},
             {"new_network_number", "192.0.2.0"},
             {"new_filename", "f"},
             {"new_server_name", "g"},
             {"new_next_server", "192.0.2.1"},
             {"old_routers", "h"},
             {"requested_routers", "1"},
             {"alias_ip_address", "i"},
             // no names of options
             {"new_", "j"},
             {"new_.interfaces", "k"},
             {"new_..", "l"},
             {"new_../../x", "m"},
             {"new_/x", "n"},
             {"new__x", "o"},
             {"new_a b", "p"},
             {"new_a\nb", "q"},
             {"new_\xFF", "r"},
             {"new_" + QByteArray(201, 'x'), "s"}});
        QCOMPARE(m_errors, QByteArray());
        QCOMPARE(files(interfaceFolder("eth0")),
                 Files({{u("domain-name-servers"), "new_domain_name_servers='a'\n"},
                        {u("unknown-228"), "new_unknown_228='b'\n"},
                        {u("x-y"), "new_x_y='c'\n"},
                        {u("interface-mtu"), "new_interface_mtu='500'\n"},
                        {u("domain-search"), "new_domain_search='d'\n"},
                        {u("domain-name"), "new_domain_name='e'\n"}}));
        QCOMPARE(QDir(m_root->path(Values)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList({u(".clients"), u(".interfaces"), u(".lock"), u("eth0")}));
        QCOMPARE(mode(interfaceFolder("eth0")), 0755u);
        QCOMPARE(mode(interfaceFolder("eth0") + u("/domain-name")), 0644u);
    }

    // Debian's script blanks a small MTU and puts the domain before the search list, ahead of the hooks.
    void changedByTheScript()
    {
        m_root->write(u("/script"),
                      "#!/bin/sh\nnew_interface_mtu=''\nnew_domain_search=\"x $new_domain_search\"\n"
                      "new_added=y\nexport new_added\nunset new_host_name\n. \"" HOOK_PATH "\"\n");
        run("BOUND", "eth0", "2",
            {{"new_interface_mtu", "500"}, {"new_domain_search", "d"}, {"new_host_name", "h"}});
        QCOMPARE(files(interfaceFolder("eth0")),
                 Files({{u("interface-mtu"), "new_interface_mtu='500'\n"},
                        {u("domain-search"), "new_domain_search='d'\n"},
                        {u("host-name"), "new_host_name='h'\n"}}));
    }

    // The script ends such a trial by taking the address away again.
    void rememberedLease_data()
    {
        QTest::addColumn<QByteArray>("address");
        QTest::newRow("address is there") << QByteArray("127.0.0.1");
        QTest::newRow("address is not there") << QByteArray("192.0.2.9");
    }

    void rememberedLease()
    {
        QFETCH(QByteArray, address);
        run("BOUND", "lo", "2", {{"new_a", "1"}});
        run("TIMEOUT", "lo", "2", {{"new_ip_address", address}, {"new_a", "2"}});
        QCOMPARE(!files(interfaceFolder("eth0")).isEmpty(),
                 QTest::currentDataTag() == QByteArray("address is there"));
    }

    void interfaces_data()
    {
        QTest::addColumn<QStringList>("events"); // interface, or "-" and the interface for a lost lease
        QTest::addColumn<QString>("first"); // whose values are there at the end
        QTest::addColumn<QString>("second");
        const auto row = [](const char *events, const char *first, const char *second) {
            QTest::newRow(events) << u(events).split(QLatin1Char(' ')) << u(first) << u(second);
        };
        row("eth0", "eth0", "");
        row("eth1", "", "eth1");
        row("enp3s0", "enp3s0", "");
        row("enp3s0 wlan0", "enp3s0", "wlan0");
        row("enp3s0 wlan0 br0", "enp3s0", "wlan0");
        row("enp3s0 wlan0 -enp3s0 br0", "", "wlan0");
        row("enp3s0 -enp3s0 enp3s0 wlan0", "enp3s0", "wlan0");
        row("eth0 enp3s0", "eth0", "enp3s0");
        row("eth0 -eth0 enp3s0", "", "enp3s0");
        row("eth1 enp3s0 wlan0", "enp3s0", "eth1");
        row("enp3s0 eth1", "enp3s0", "eth1");
        row("enp3s0 eth0", "eth0", "enp3s0");
        row("enp3s0 eth0 eth1", "eth0", "eth1");
        row("enp3s0 wlan0 eth0", "eth0", "wlan0");
        row("enp3s0 wlan0 eth0 enp3s0 -eth0", "", "wlan0");
        row("enp3s0 wlan0 eth1", "enp3s0", "eth1");
        row("a/b .. . x\ty seventeen-letters", "", "");
        row("$(ran) ';ran", "$(ran)", "';ran");
        row("# #1 eth0 #1", "eth0", "#1");
    }

    void interfaces()
    {
        QFETCH(QStringList, events);
        QFETCH(QString, first);
        QFETCH(QString, second);
        for (const QString &event : qAsConst(events)) {
            const bool lost = event.startsWith(QLatin1Char('-'));
            const QByteArray interface = event.mid(lost ? 1 : 0).toUtf8();
            run(lost ? "EXPIRE" : "BOUND", interface, "2", {{"new_from", interface}});
            QCOMPARE(m_errors, QByteArray());
        }
        const auto content = [](const QString &from) {
            return from.isEmpty() ? Files() : Files({{u("from"), "new_from='" + from.toUtf8() + "'\n"}});
        };
        QCOMPARE(files(interfaceFolder("eth0")), content(first));
        QCOMPARE(files(interfaceFolder("eth1")), content(second));
    }

    void spoiledRecord_data()
    {
        QTest::addColumn<QByteArray>("record");
        QTest::newRow("empty lines, short lines") << QByteArray("\n\nwlan0\nwlan0 bound\n \n");
        QTest::newRow("other folders") << QByteArray("wlan0 ../../x\nbr0 /etc\n");
        QTest::newRow("foreign folder") << QByteArray("eth0 eth1\neth1 eth0\n");
        QTest::newRow("no client") << QByteArray(
            "eth0 bound x\neth0 bound -1,2\neth0 bound 99999999999999999999,x\n");
        QTest::newRow("no text") << QByteArray("\0\xFF\n\xFE \xFF \xFF \xFF\n", 12);
    }

    void spoiledRecord()
    {
        QFETCH(QByteArray, record);
        m_root->write(Values + u("/.interfaces"), record);
        m_root->write(Values + u("/.clients"), record);
        run("BOUND", "eth0", "2", {{"new_a", "1"}});
        run("BOUND", "br0", "2", {{"new_a", "2"}});
        QCOMPARE(m_errors, QByteArray());
        QCOMPARE(files(interfaceFolder("eth0")).value(u("a")), QByteArray("new_a='1'\n"));
        QCOMPARE(files(interfaceFolder("eth1")).value(u("a")), QByteArray("new_a='2'\n"));
    }

    void caller_data()
    {
        QTest::addColumn<QByteArray>("recorder"); // null: the real one; empty: none
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("recorded") << QByteArray() << QByteArray("BOUND");
        QTest::newRow("ignored") << QByteArray() << QByteArray("PREINIT");
        QTest::newRow("no reason") << QByteArray() << QByteArray();
        QTest::newRow("no recorder") << QByteArray("") << QByteArray("BOUND");
        QTest::newRow("failing recorder") << QByteArray("#!/bin/sh\nexit 3\n") << QByteArray("BOUND");
        QTest::newRow("dying recorder") << QByteArray("#!/bin/sh\nkill -9 $$\n") << QByteArray("BOUND");
        QTest::newRow("broken recorder") << QByteArray("#!/nonexistent\n") << QByteArray("BOUND");
        QTest::newRow("reading, talking recorder")
            << QByteArray("#!/bin/sh\ncat\necho talk\n") << QByteArray("BOUND");
    }

    // Strict shells notice what the client's own script would not.
    void caller()
    {
        QFETCH(QByteArray, recorder);
        QFETCH(QByteArray, reason);
        const QString path = m_root->path(u("/usr/libexec/kiro-dhcp-mgr/record-lease"));
        if (!recorder.isNull())
            QFile::remove(path);
        if (!recorder.isEmpty()) {
            m_root->write(u("/usr/libexec/kiro-dhcp-mgr/record-lease"), recorder);
            QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner);
        }
        m_root->write(u("/script"),
                      "#!/bin/sh\nset -euf\ntrap 'echo trapped' EXIT\ntrap : HUP\nIFS=e/\numask 0\ncd /\n"
                      "set -- one 'two three'\nstate() { set; set -o; trap; umask; pwd; echo \"$# $*\"; }\n"
                      "state >\"$KIRO_DHCP_MGR_ROOT/before\"\n"
                      "before=kept\n. \"" HOOK_PATH "\"\nstatus=$?\n"
                      "unset before\nexpected=$status\nunset status\n"
                      "[ \"$expected\" = 0 ] || echo \"status $expected\"\nunset expected\n"
                      "state >\"$KIRO_DHCP_MGR_ROOT/after\"\necho end\n");
        Variables variables = {{"new_a", "1"}};
        QProcessEnvironment environment = environmentFor(reason, "eth0", "2", variables);
        if (reason.isNull())
            environment.remove(u("reason"));
        QProcess shell;
        shell.setProcessEnvironment(environment);
        shell.start(u("dash"), {m_root->path(u("/script"))});
        shell.write("input");
        shell.closeWriteChannel();
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.exitCode(), 0);
        QCOMPARE(shell.readAllStandardOutput(), QByteArray("end\ntrapped\n"));
        QCOMPARE(content(u("/after")), content(u("/before")));
        QVERIFY(!content(u("/before")).isEmpty());
        if (QTest::currentDataTag() == QByteArray("recorded"))
            QCOMPARE(mode(Values), 0755u);
    }

    void obstacles_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<bool>("recorded");
        const auto row = [](const char *name, const char *command, bool recorded) {
            QTest::newRow(name) << QByteArray(command) << recorded;
        };
        row("folder is a file", "mkdir -p var/lib/dhcp3; touch var/lib/dhcp3/vars", false);
        row("lock is a link", "mkdir -p var/lib/dhcp3/vars; ln -s /x var/lib/dhcp3/vars/.lock", false);
        row("lock is a folder", "mkdir -p var/lib/dhcp3/vars/.lock", false);
        row("value is a folder", "mkdir -p var/lib/dhcp3/vars/eth0/a/b", false);
        row("value is a link",
            "mkdir -p var/lib/dhcp3/vars/eth0; touch safe; ln -s ../../../../../safe var/lib/dhcp3/vars/eth0/a", true);
        row("value is a pipe", "mkdir -p var/lib/dhcp3/vars/eth0; mkfifo var/lib/dhcp3/vars/eth0/a", true);
        row("half a file is left",
            "mkdir -p var/lib/dhcp3/vars/eth0; echo x >var/lib/dhcp3/vars/eth0/.unfinished", true);
        row("value with other mode",
            "mkdir -p var/lib/dhcp3/vars/eth0; umask 077; echo \"new_a='1'\" >var/lib/dhcp3/vars/eth0/a", true);
    }

    void obstacles()
    {
        QFETCH(QByteArray, command);
        QFETCH(bool, recorded);
        QProcess shell;
        shell.setWorkingDirectory(m_root->path(QString()));
        shell.start(u("sh"), {u("-c"), QString::fromUtf8(command)});
        QVERIFY(shell.waitForFinished() && shell.exitCode() == 0);
        run("BOUND", "eth0", "2", {{"new_a", "1"}});
        QCOMPARE(m_errors.isEmpty(), recorded);
        QCOMPARE(content(Values + u("/eth0/a")) == "new_a='1'\n", recorded);
        if (recorded) {
            QCOMPARE(mode(Values + u("/eth0/a")), 0644u);
            QVERIFY(!QFile::exists(m_root->path(Values + u("/eth0/.unfinished"))));
            QCOMPARE(content(u("/safe")), QByteArray());
        }
    }

    void renewalWritesOnlyWhatChanged()
    {
        run("BOUND", "eth0", "2", {{"new_same", "1"}, {"new_other", "1"}});
        const auto inode = [this](const char *name) {
            struct stat status = {};
            ::stat(QFile::encodeName(m_root->path(Values + u("/eth0/") + u(name))).constData(), &status);
            return status.st_ino;
        };
        const ino_t same = inode("same");
        const QByteArray reader = QFile::encodeName(m_root->path(Values + u("/eth0/other")));
        QFile open(QFile::decodeName(reader));
        QVERIFY(open.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
        run("RENEW", "eth0", "2", {{"new_same", "1"}, {"new_other", "2"}});
        QCOMPARE(inode("same"), same);
        QCOMPARE(open.readAll(), QByteArray("new_other='1'\n")); // who has begun to read reads to the end
        QCOMPARE(content(Values + u("/eth0/other")), QByteArray("new_other='2'\n"));
    }

    void manyAtOnce()
    {
        std::vector<std::unique_ptr<QProcess>> hooks;
        for (int i = 0; i < 12; ++i) {
            Variables variables;
            for (int option = 0; option < 200; ++option)
                variables["new_option_" + QByteArray::number(option)] = QByteArray::number(i);
            hooks.push_back(std::make_unique<QProcess>());
            hooks.back()->setProcessEnvironment(
                environmentFor("BOUND", i % 2 ? "enp3s0" : "wlan0", "2", variables));
            hooks.back()->start(u("dash"), {m_root->path(u("/script"))});
        }
        for (const auto &hook : hooks) {
            QVERIFY(hook->waitForFinished());
            QCOMPARE(hook->readAllStandardError(), QByteArray());
        }
        for (const char *folder : {"eth0", "eth1"}) {
            const Files values = files(interfaceFolder(folder));
            QCOMPARE(values.size(), 200);
            const QByteArray of = values.first().mid(values.first().indexOf('='));
            for (const QByteArray &value : values)
                QCOMPARE(value.mid(value.indexOf('=')), of); // all of one event
        }
    }

    void waitingEnds()
    {
        run("BOUND", "eth0", "2", {{"new_a", "1"}});
        QFile lock(m_root->path(Values + u("/.lock")));
        QVERIFY(lock.open(QIODevice::ReadWrite));
        QCOMPARE(::flock(lock.handle(), LOCK_EX), 0);
        QElapsedTimer timer;
        timer.start();
        run("BOUND", "eth0", "2", {{"new_a", "2"}});
        QVERIFY(timer.elapsed() > 4000 && timer.elapsed() < 20000);
        QVERIFY(m_errors.contains(".lock"));
        QCOMPARE(content(Values + u("/eth0/a")), QByteArray("new_a='1'\n"));
    }
};

QTEST_GUILESS_MAIN(TestHook)
#include "tst_hook.moc"
