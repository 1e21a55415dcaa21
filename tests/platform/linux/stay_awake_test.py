"""Sleep and shutdown are inhibited by logind's rules: against dbusmock's logind on a private bus.

Usage: stay_awake_test.py CHILD_PROGRAM
"""

import os
import subprocess
import sys
import tempfile
import time
import unittest

import dbus
import dbusmock

MANAGER = "org.freedesktop.login1.Manager"
NAME, PATH = "org.freedesktop.login1", "/org/freedesktop/login1"
EVERYTHING = "sleep:shutdown:handle-lid-switch"


class StayAwake(dbusmock.DBusTestCase):
    @classmethod
    def setUpClass(cls):
        cls.start_system_bus()
        cls.bus = cls.get_dbus(system_bus=True)

    def start(self, **variables):
        """Starts a program that keeps the machine awake; returns it and what it reports."""
        report = os.path.join(tempfile.mkdtemp(), "report")
        child = subprocess.Popen([PROGRAM, "awake", report, "sleep", "60000"],
                                 env=dict(os.environ, **variables))
        self.addCleanup(child.wait)
        self.addCleanup(child.kill)
        self.wait_for(lambda: os.path.exists(report) and os.path.getsize(report) > 0)
        with open(report, encoding="utf-8") as file:
            return child, file.read().strip()

    def wait_for(self, condition):
        for _ in range(200):
            if condition():
                return
            time.sleep(0.05)
        self.fail("waited in vain")

    def serve(self, server):
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)

    def test_until_the_process_ends_however_it_ends(self):
        server, mock = self.spawn_server_template("logind", {}, subprocess.DEVNULL)
        self.serve(server)
        manager = dbus.Interface(mock, MANAGER)
        child, report = self.start()
        self.assertEqual(report, "awake")
        self.assertEqual([tuple(map(str, lock[:4])) for lock in manager.ListInhibitors()],
                         [(EVERYTHING, "Кто", "Почему", "block")])
        child.kill()
        child.wait()
        self.wait_for(lambda: not manager.ListInhibitors())

    def test_what_is_allowed_is_asked_for_when_everything_is_not(self):
        server = self.spawn_server(NAME, PATH, MANAGER, system_bus=True, stdout=subprocess.DEVNULL)
        self.serve(server)
        mock = dbus.Interface(self.bus.get_object(NAME, PATH), dbusmock.MOCK_IFACE)
        mock.AddMethod(MANAGER, "Inhibit", "ssss", "h", "\n".join([
            "if args[0] != 'sleep':",
            "  raise dbus.exceptions.DBusException('no', name='org.freedesktop.DBus.Error.AccessDenied')",
            "ret = dbus.types.UnixFd(os.open('/dev/null', os.O_RDONLY))"]))
        self.assertEqual(self.start()[1], "awake")
        self.assertEqual([str(call[2][0]) for call in mock.GetCalls()],
                         [EVERYTHING] + EVERYTHING.split(":"))

    def test_without_logind_or_a_bus_work_goes_on(self):
        self.assertEqual(self.start()[1], "not")
        self.assertEqual(self.start(DBUS_SYSTEM_BUS_ADDRESS="unix:path=/nowhere")[1], "not")


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    unittest.main()
