# accessibility.py DEMO: what assistive tools see of every window, read from the bus that they use. Fails on a control
# without a name. To be run in a session bus of its own: dbus-run-session -- /usr/bin/python3 accessibility.py DEMO
import os
import subprocess
import sys
import tempfile
import time

import dbus

SPEAKING = {"push button", "check box", "radio button", "text", "list", "combo box", "page tab", "menu item",
            "spin button", "password text", "document text"}
ACCESSIBLE = "org.a11y.atspi.Accessible"


def wait_for(what, condition):
    end = time.monotonic() + 30
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.1)
    sys.exit("waited in vain for " + what)


class Node:
    def __init__(self, bus, reference):
        self.bus, self.proxy = bus, bus.get_object(*reference, introspect=False)

    def name(self):
        return str(self.proxy.Get(ACCESSIBLE, "Name", dbus_interface="org.freedesktop.DBus.Properties"))

    def role(self):
        return str(self.proxy.GetRoleName(dbus_interface=ACCESSIBLE))

    def children(self):
        return [Node(self.bus, child) for child in self.proxy.GetChildren(dbus_interface=ACCESSIBLE)]

    def below(self):
        for node in self.children():
            # The list that a combo box opens is part of it.
            if node.role() != "list" or self.role() != "combo box":
                yield node
                yield from node.below()

    def press(self, role, name):
        node = wait_for(name, lambda: next((n for n in self.below() if (n.role(), n.name()) == (role, name)), None))
        # A dialog answers only when it is closed.
        node.proxy.get_dbus_method("DoAction", "org.a11y.atspi.Action")(dbus.Int32(0), ignore_reply=True)


home = tempfile.TemporaryDirectory()
display = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp"],
                           stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
screen = ":" + display.stdout.readline().decode().strip()
launcher = subprocess.Popen(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"], stderr=subprocess.DEVNULL)
environment = dict(os.environ, DISPLAY=screen, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_QPA_PLATFORM="xcb",
                   XDG_DATA_HOME=home.name, XDG_CONFIG_HOME=home.name)
session = dbus.SessionBus()
wait_for("the accessibility bus", lambda: session.name_has_owner("org.a11y.Bus"))
address = session.get_object("org.a11y.Bus", "/org/a11y/bus").GetAddress(dbus_interface="org.a11y.Bus")
demo = subprocess.Popen([sys.argv[1]], env=environment, stdout=subprocess.DEVNULL)
nameless, controls = set(), 0
try:
    root = Node(dbus.bus.BusConnection(str(address)), ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"))
    program = wait_for("the program", lambda: next(root.below(), None))
    wait_for("the main window", lambda: any(w.name().startswith("Tamarack --") for w in program.children()))
    for role, name, close in (("menu item", "Slide Show", None), ("menu item", "Sizeable Viewer", None),
                              ("menu item", "Help Topics", None), ("menu item", "About", "OK"),
                              ("push button", "Add News Server...", "Cancel"),
                              ("push button", "Select Destination Drive", "Cancel")):
        before = len(program.children())
        program.press(role, name)
        wait_for("the window of " + name, lambda: len(program.children()) > before)
        seen = [(node.role(), node.name()) for node in program.below()]
        if close:
            program.press("push button", close)
            wait_for("the end of " + name, lambda: len(program.children()) == before)
        nameless |= {role + " in " + name for role, text in seen if role in SPEAKING and not text}
        controls += sum(role in SPEAKING for role, text in seen)
finally:
    for process in (demo, launcher, display):
        process.terminate()
        process.wait()
print(controls, "controls")
if nameless or controls < 500:
    sys.exit("without a name: " + ", ".join(sorted(nameless)))
