"""The machine's identity and settings."""

import json
import os
import shutil

import dbus

from buses import BUILD, OnPrivateBuses


class Machine(OnPrivateBuses):
    def describe(self):
        with open(self.folder + "/appinfo.json", "w") as file:
            json.dump({"id": "com.example.driver", "title": "Driver"}, file)

    def test_settings_come_from_the_machine(self):
        self.describe()
        hostname = self.serve("org.freedesktop.hostname1", "/org/freedesktop/hostname1",
                              "org.freedesktop.hostname1", True)
        hostname.AddProperty("org.freedesktop.hostname1", "PrettyHostname", 'Ann\'s "phone"')
        locale = self.serve("org.freedesktop.locale1", "/org/freedesktop/locale1",
                            "org.freedesktop.locale1", True)
        locale.AddProperty("org.freedesktop.locale1", "Locale",
                           dbus.Array(["LANG=pt_BR.UTF-8", "LC_TIME=de_DE"], signature="s"))
        lines = self.run_driver("about", TAV_PORTABILITY_final_spoofing="ember")
        self.assertEqual(lines[:4], ['Ann\'s "phone"', "br", "Brazil", "pt_br"])
        self.assertEqual(lines[6:], [
            "601", "title 0", "Driver", "no value 11 ",
            self.folder + "/share/com.example.driver/level", self.folder + "/appinfo.json"])
        for language, expected in (("de_DE.UTF-8", ["de", "Germany", "de_de"]),
                                   ("eo", ["-", "-", "eo_"]), ("sr.UTF-8@latin", ["-", "-", "sr_"])):
            self.assertEqual(self.run_driver("about", LANG=language)[1:4], expected)

    def test_an_installed_program_finds_what_is_in_share(self):
        data = self.folder + "/share/tav_linux_driver"
        os.makedirs(data)
        os.mkdir(self.folder + "/bin")
        self.program = shutil.move(self.program, self.folder + "/bin")
        with open(data + "/appinfo.json", "w") as file:
            json.dump({"title": "Installed"}, file)
        open(data + "/level", "w").close()
        for command in ([], [BUILD + "/bin/tavsim", "run"]):
            lines = self.finish(self.start_program(*command, self.program, "about"))
            self.assertEqual([lines[8], *lines[-2:]], [
                "Installed", data + "/level", data + "/appinfo.json"])

    def test_the_unique_id_belongs_to_the_application(self):
        self.describe()
        first = self.run_driver("about")[4]
        self.assertRegex(first, "^[0-9a-f]{40}$")
        self.assertEqual(self.run_driver("about")[4], first)
        # Not even the root user can create a file below a file.
        nowhere = dict(HOME=self.program, XDG_RUNTIME_DIR=None, TMPDIR=self.folder)
        about = self.run_driver("about", **nowhere)
        self.assertEqual((about[4], about[0] == "-"), (first, False))
        own = f"{self.folder}/libtav-{os.geteuid()}"
        self.assertEqual(os.stat(own).st_mode & 0o777, 0o700)
        os.chmod(own, 0o777)
        self.assertEqual(self.run_driver("about", **nowhere)[4], "-")
        os.remove(self.folder + "/appinfo.json")
        self.assertNotEqual(self.run_driver("about")[4], first)
