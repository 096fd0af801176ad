"""A ModemManager for tests, as a template of python3-dbusmock. Prints what it is asked, a line each:
"create PATH KEY=VALUE ...", "start PATH", "delete PATH".

Parameters: "modems", a list of [number, can speak]; "create" and "start", what becomes of the
question: "ok", "refused", "vanish" (the service ends without an answer), "silent" (no answer),
"late" (answered as soon as the file named by "gate" is there).
"""
import os
import time

import dbus
from dbusmock import mockobject

BUS_NAME = "org.freedesktop.ModemManager1"
MAIN_OBJ = "/org/freedesktop/ModemManager1"
MAIN_IFACE = "org.freedesktop.ModemManager1"
SYSTEM_BUS = True
IS_OBJECT_MANAGER = True

MODEM = "org.freedesktop.ModemManager1.Modem"
VOICE = MODEM + ".Voice"
CALL = "org.freedesktop.ModemManager1.Call"


def answer(way, gate=None):
    if way == "refused":
        raise dbus.exceptions.DBusException(
            "no network", name="org.freedesktop.ModemManager1.Error.Core.WrongState")
    if way == "vanish":
        os._exit(0)
    while way == "late" and not os.path.exists(gate):
        time.sleep(0.005)
    if way == "silent":
        time.sleep(600)


def load(mock, parameters):
    made = []

    def start(call, *_):
        print("start", call.path, flush=True)
        answer(parameters.get("start"))

    def create(modem, properties):
        path = f"{MAIN_OBJ}/Call/{len(made)}"
        made.append(path)
        pairs = [f"{key}={value}" for key, value in sorted(properties.items())]
        print("create", modem.path, *pairs, flush=True)
        answer(parameters.get("create"), parameters.get("gate"))
        mock.AddObject(path, CALL, {}, [("Start", "", "", start)])
        return dbus.ObjectPath(path)

    def delete(_, path):
        print("delete", path, flush=True)

    for number, speaks in parameters["modems"]:
        path = f"{MAIN_OBJ}/Modem/{number}"
        mock.AddObject(path, MODEM, {"Manufacturer": "Kelpin"}, [])
        if speaks:
            mockobject.objects[path].AddMethods(
                VOICE, [("CreateCall", "a{sv}", "o", create), ("DeleteCall", "o", "", delete)])
            mockobject.objects[path].AddProperty(VOICE, "EmergencyOnly", False)
