#!/usr/bin/env python3
"""Talks to the running example instrument over TCP; see instrument.py for what it needs."""
import random
import signal
import socket
import threading
import unittest

from instrument import DEADLINE, Instrument

IDENTITY = "Orvia,SG-100,100042,1.0.0"


class RunningInstrument(unittest.TestCase):
    def setUp(self):
        self.instrument = Instrument()
        self.addCleanup(self.instrument.close)
        self.instrument.start()

    def assertServes(self):
        with self.instrument.client() as client:
            self.assertEqual(client.ask("*IDN?"), IDENTITY)

    def assertEndsWell(self):
        self.assertEqual(self.instrument.stop(), 0, "\n".join(self.instrument.log))


class Commands(RunningInstrument):
    def test_short_and_long_forms(self):
        with self.instrument.client() as client:
            self.assertEqual(client.ask("*IDN?"), IDENTITY)
            self.assertEqual(client.ask("FREQ?;POW?;OUTP?"), "1000000000;-30;0")
            client.send("SOURce:FREQuency:CW 2.5 GHZ;:POW -12.5 dBm;:OUTPut:STATe ON")
            self.assertEqual(client.ask("freq?;:source:power:level?;:OUTP?"), "2500000000;-12.5;1")
            self.assertEqual(client.ask("*RST;*OPC?;FREQ?\r"), "1;1000000000")
            self.assertEqual(client.ask("*TST?"), "0")
        self.assertEndsWell()

    def test_bad_commands_are_queued_in_order(self):
        with self.instrument.client() as client:
            client.send("FOO:BAR 1\nFREQ\nFREQ 9 GHZ\nFREQ 1 V\n*CLS 1\nFREQUEN?")
            self.assertEqual(client.ask("*STB?"), "4")
            self.assertEqual(client.ask("SYSTem:ERRor:NEXT?"), '-113,"Undefined header;FOO:BAR"')
            self.assertEqual(client.errors(), [-109, -222, -131, -108, -113])
            self.assertEqual(client.ask("*ESR?"), "48")
            self.assertEqual(client.ask("FREQ?"), "1000000000")

    def test_several_clients_at_once(self):
        def sweep(number):
            try:
                with self.instrument.client() as client:
                    for step in range(20):
                        client.send(f"*ESE {number * 20 + step}")
                        answers.append(client.ask("*ESE?") == str(number * 20 + step))
                        answers.append(client.ask("*IDN?;:POW -7;POW?") == IDENTITY + ";-7")
            except Exception as error:
                answers.append(error)

        answers = []
        threads = [threading.Thread(target=sweep, args=(number,)) for number in range(8)]
        with self.instrument.client(): # and one that says nothing
            for thread in threads:
                thread.start()
            for thread in threads:
                thread.join(DEADLINE)
        self.assertEqual(answers, [True] * (8 * 20 * 2))

    def test_refused_and_option_bound_modules(self):
        for name, loaded in {"RefClock...": True, "Loadable CableLoss": True, "Plugin Loadable PulseTrain": False,
                             "PowerMeter...": False, "ServiceCounter...": False}.items():
            self.assertEqual(self.instrument.has_logged(f"Initializing {name}"), loaded, name)
        for line in ("PowerMeter.so module will be unloaded because it isn't necessary for this device!",
                     "ServiceCounter.so module will be unloaded because of wrong module type"):
            self.assertTrue(self.instrument.has_logged(line), line)
        self.assertFalse(self.instrument.has_logged("PulseTrain"))


class Extensions(RunningInstrument):
    def conflicts(self, client, message):
        client.send(message)
        return client.errors() == [-221] and client.ask("*ESR?") == "16"

    def test_modulations(self):
        with self.instrument.client() as client:
            self.assertEqual(client.ask("AM:STAT?;DEPT?;FREQ?;:PULM:STAT?;PER?;WIDT?"),
                             "0;30;1000;0;0.00001;0.000001")
            client.send("SOUR:AM:STATE ON;DEPTH 55.5 PCT;FREQ 2.5 KHZ;:PULM:STAT 1;PERIOD 100 US;WIDTH 20 US")
            values = "1;55.5;2500;1;0.0001;0.00002"
            self.assertEqual(client.ask("AM:STAT?;DEPT?;FREQ?;:PULM:STAT?;PER?;WIDT?"), values)
            self.assertTrue(self.conflicts(client, "PULM:WIDT 100 US"))
            self.assertTrue(self.conflicts(client, "PULM:PER 20 US"))
            self.assertTrue(self.conflicts(client, "POW 18")) # + 3.8 dB at the peaks
            self.assertEqual(client.ask("AM:STAT OFF;:POW 18;POW?"), "18")
            self.assertTrue(self.conflicts(client, "AM:STAT ON"))
            client.send("POW 0;:AM:STAT ON;DEPT 101;FREQ 1 S")
            self.assertEqual(client.errors(), [-222, -131])
            for ended_with in (signal.SIGTERM, signal.SIGKILL):
                self.instrument.stop(ended_with)
                self.instrument.start()
                with self.instrument.client() as again:
                    self.assertEqual(again.ask("AM:STAT?;DEPT?;FREQ?;:PULM:STAT?;PER?;WIDT?"), values)
        with self.instrument.client() as client:
            self.assertEqual(client.ask("*RST;:AM:STAT?;DEPT?;FREQ?;:PULM:STAT?;PER?;WIDT?"),
                             "0;30;1000;0;0.00001;0.000001")
        self.assertEndsWell()

    def test_loadables(self):
        self.assertEndsWell()
        self.instrument.set_property("installedOptions", "REFCLOCK|CORRECTION|TRAIN")
        self.instrument.start()
        with self.instrument.client() as client:
            self.assertEqual(client.ask("POW 3;FREQ 4 GHZ;CORR:LOSS 1.25 DB;LEV?;STAT ON;LEV?"), "3;0.5")
            self.assertEqual(client.ask("FREQ:STAR 1 GHZ;STOP 2 GHZ;:SWE:POIN 11;STEP?"), "100000000")
            self.assertTrue(self.conflicts(client, "FREQ:STOP 1 GHZ"))
            self.assertEqual(client.ask("AM:PROF 2;DEPT?;FREQ?;PROF?;DEPT 50;PROF?"), "80;1000;2;0")
            self.assertEqual(client.ask("AM:STAT ON;:POW 16;POW?"), "16")
            self.assertTrue(self.conflicts(client, "AM:PROF 2")) # the depth that it brings
            self.assertEqual(client.ask("PULM:TRA:COUN 3;PAUS 1 MS;DUR?"), "0.00103")
        self.assertEndsWell()
        names = ("PulseTrain", "AmProfile", "PulseMod", "AmMod", "FreqSweep", "CableLoss")
        lines = [self.instrument.log.index(next(line for line in self.instrument.log if text in line))
                 for text in [f"{name}: taken down" for name in names]]
        self.assertEqual(lines, sorted(lines), names)


class HostileClients(RunningInstrument):
    def test_half_closed_client_gets_its_answers(self):
        with self.instrument.client() as client:
            client.send("*IDN?\n*OPC?")
            client.socket.shutdown(socket.SHUT_WR)
            self.assertEqual([client.line(), client.line()], [IDENTITY, "1"])
            self.assertEqual(client.lines.readline(), b"")

    def test_disconnecting_midway(self):
        for message in (b"", b"FREQ 3 GH", b"*IDN?\n*ID", b"*IDN?\n" * 1000):
            client = self.instrument.client()
            client.send(message)
            client.close()
        self.assertServes()
        self.assertEndsWell()

    def test_binary_garbage(self):
        source = random.Random(1)
        with self.instrument.client() as client:
            for _ in range(20):
                client.send(source.randbytes(5000))
            client.send(b"\n")
            self.assertEqual(client.ask("*CLS;*IDN?"), IDENTITY)
        self.assertServes()

    def test_line_without_end(self):
        before = self.instrument.memory()
        with self.instrument.client() as client:
            for _ in range(64):
                client.send(b"A" * 2**20)
            self.assertServes()
            self.assertLess(self.instrument.memory() - before, 32 * 2**20)
            client.send(b"\n")
            self.assertEqual(client.errors(), [-363])
            self.assertEqual(client.ask("*IDN?"), IDENTITY)

    def test_client_that_never_reads(self):
        before = self.instrument.memory()
        with self.instrument.client() as client:
            client.socket.settimeout(1)
            message = b"*IDN?;" * 1000 + b"*OPC?\n"
            sent = 0
            with self.assertRaises(TimeoutError): # the instrument stops taking what it cannot answer
                while sent < 2**28:
                    sent += client.socket.send(message[sent % len(message):])
            self.assertServes()
            self.assertLess(self.instrument.memory() - before, 32 * 2**20)
            client.socket.settimeout(DEADLINE) # goes on where it stopped
            for _ in range(sent // len(message)):
                self.assertEqual(client.line(), (IDENTITY + ";") * 1000 + "1")
        self.assertServes()
        self.assertEndsWell()

    def test_more_clients_than_are_served(self):
        clients = [self.instrument.client() for _ in range(40)]
        served = 0
        for client in clients:
            try:
                served += client.ask("*IDN?") == IDENTITY
            except (AssertionError, OSError):
                pass
            client.close()
        self.assertEqual(served, 32)
        self.assertServes()


class Persistence(RunningInstrument):
    def test_settings_after_restart(self):
        with self.instrument.client() as client:
            self.assertEqual(client.ask("FREQ 433.92 MHZ;POW 3;OUTP ON;*OPC?"), "1")
        for ended_with, code in ((signal.SIGTERM, 0), (signal.SIGKILL, -9), (signal.SIGINT, 0)):
            self.assertEqual(self.instrument.stop(ended_with), code)
            self.instrument.start()
            with self.instrument.client() as client:
                self.assertEqual(client.ask("FREQ?;POW?;OUTP?"), "433920000;3;1")

    def test_kill_between_settings(self):
        """What was answered is there after the kill, however many commands were under way."""
        for run in range(3):
            with self.instrument.client() as client:
                client.send("".join(f"POW {-100 + step};POW?\n" for step in range(100)).encode())
                for _ in range(20 + run):
                    confirmed = float(client.line())
                self.instrument.stop(signal.SIGKILL)
            self.instrument.start()
            with self.instrument.client() as client:
                self.assertGreaterEqual(float(client.ask("POW?")), confirmed)

    def test_with_the_front_panel(self):
        self.assertEndsWell()
        self.instrument.start("--offscreen")
        with self.instrument.client() as client:
            self.assertEqual(client.ask("POW -1.5;:AM:DEPT 40;:PULM:STAT ON;*RST;:AM:DEPT?;:PULM:STAT?"), "30;0")
        self.assertTrue(self.instrument.has_logged("PulseMod: Gui part is up"))
        self.assertEndsWell()
        self.assertTrue(self.instrument.has_logged("GUI: terminated"))


class Failures(unittest.TestCase):
    def setUp(self):
        self.instrument = Instrument()
        self.addCleanup(self.instrument.close)

    def test_damaged_database(self):
        self.instrument.database.write_bytes(b"x" * 5000)
        self.instrument.start()
        self.assertTrue(self.instrument.has_logged("Initialization of Module Database failed!"))
        with self.instrument.client() as client:
            self.assertIn(-320, client.errors())
            self.assertEqual(client.ask("FREQ 2 GHZ;FREQ?"), "1000000000")
            self.assertEqual(client.errors(), [-320])
            self.assertEqual(client.ask("*TST?"), "1")
        self.assertGreaterEqual(self.instrument.stop(), 0) # no crash
        self.assertEqual(self.instrument.database.read_bytes(), b"x" * 5000)

    def test_port_taken(self):
        with socket.create_server(("127.0.0.1", 0)) as taken:
            port = taken.getsockname()[1]
            self.instrument.set_property("port", port)
            self.instrument.start()
            self.assertTrue(self.instrument.has_logged(f"SCPI: cannot listen on 127.0.0.1 port {port}: "))
            self.assertTrue(self.instrument.has_logged("Initialization of Module ScpiDll failed!"))
            self.assertGreaterEqual(self.instrument.stop(), 0) # no crash

    def test_address_that_is_none(self):
        for key, value in (("port", "70000"), ("address", "nowhere")):
            self.instrument.set_property(key, value)
            self.instrument.start()
            self.assertTrue(self.instrument.has_logged("SCPI: not an address: "))
            self.assertIsNone(self.instrument.port)
            self.assertGreaterEqual(self.instrument.stop(), 0) # no crash


if __name__ == "__main__":
    unittest.main(verbosity=2)
