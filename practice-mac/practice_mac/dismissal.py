"""An authentication agent for polkit that cancels every request: the user dismisses the administrator prompt.

Without a login session polkit knows agents only by the process that asks, so each program gets one of its own. Python's
standard library has no D-Bus; this file has the part of it that an agent takes.
"""
import os
import select
import socket
import struct
from collections.abc import Callable

POLKIT = "org.freedesktop.PolicyKit1"
CALL, RETURN, ERROR = 1, 2, 3
PATH, INTERFACE, MEMBER, ERROR_NAME, REPLY_SERIAL, DESTINATION, SENDER, SIGNATURE = range(1, 9)
FIELD_TYPES = {PATH: "o", REPLY_SERIAL: "u", SIGNATURE: "g"}  # every other field is a string


class Writer:
    """Values one after another, each aligned as D-Bus wants it, counted from the start of the message or body."""

    def __init__(self) -> None:
        self.bytes = bytearray()

    def align(self, size: int) -> "Writer":
        self.bytes += bytes(-len(self.bytes) % size)
        return self

    def number(self, form: str, value: int) -> "Writer":
        self.align(struct.calcsize(form))
        self.bytes += struct.pack("<" + form, value)
        return self

    def string(self, text: str) -> "Writer":
        self.number("I", len(text.encode()))
        self.bytes += text.encode() + b"\0"
        return self

    def signature(self, text: str) -> "Writer":
        self.bytes += bytes([len(text)]) + text.encode() + b"\0"
        return self

    def array_of_structs(self, write_items: Callable[["Writer"], None]) -> "Writer":
        at = len(self.number("I", 0).bytes) - 4
        start = len(self.align(8).bytes)
        write_items(self)
        struct.pack_into("<I", self.bytes, at, len(self.bytes) - start)
        return self


class Bus:
    def __init__(self) -> None:
        self.serial = 0
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect("/run/dbus/system_bus_socket")
        self.socket.sendall(b"\0AUTH EXTERNAL " + str(os.getuid()).encode().hex().encode() + b"\r\n")
        if not self.socket.recv(200).startswith(b"OK"):
            raise OSError("the system bus refuses the authentication agent")
        self.socket.sendall(b"BEGIN\r\n")
        self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "Hello")

    def read(self, size: int) -> bytes:
        return self.socket.recv(size, socket.MSG_WAITALL) if size else b""

    def send(self, kind: int, fields: dict, signature: str = "", body: bytes = b"") -> int:
        self.serial += 1
        if signature:
            fields = {**fields, SIGNATURE: signature}

        def write_fields(writer: Writer) -> None:
            for field, value in fields.items():
                form = FIELD_TYPES.get(field, "s")
                writer.align(8).bytes.append(field)
                writer.signature(form)
                match form:
                    case "u":
                        writer.number("I", value)
                    case "g":
                        writer.signature(value)
                    case _:
                        writer.string(value)

        message = Writer()
        message.bytes += struct.pack("<cBBBII", b"l", kind, 0, 1, len(body), self.serial)
        message.array_of_structs(write_fields).align(8)
        self.socket.sendall(bytes(message.bytes) + body)
        return self.serial

    def receive(self) -> tuple[int, int, dict, bytes]:
        """Kind, serial, fields and body of the next message, all from this machine and so in its byte order."""
        _, kind, _, _, body_size, serial, fields_size = struct.unpack("<cBBBIII", self.read(16))
        block = self.read(fields_size + -fields_size % 8)
        fields, at = {}, 0
        while at < fields_size:
            at += -at % 8
            field, form = block[at], chr(block[at + 2])
            at += 4
            if form == "u":
                fields[field] = struct.unpack_from("<I", block, at)[0]
                at += 4
            else:
                size, head = (block[at], 1) if form == "g" else (struct.unpack_from("<I", block, at)[0], 4)
                fields[field] = block[at + head:at + head + size].decode()
                at += head + size + 1
        return kind, serial, fields, self.read(body_size)

    def call(self, to: str, path: str, interface: str, member: str, signature: str = "", body: bytes = b"") -> None:
        asked = self.send(CALL, {PATH: path, DESTINATION: to, INTERFACE: interface, MEMBER: member}, signature, body)
        while True:
            kind, _, fields, answer = self.receive()
            if fields.get(REPLY_SERIAL) == asked:
                if kind == ERROR:
                    raise OSError(f"{fields[ERROR_NAME]}: {answer[4:-1].decode()}")
                return


def start_time(pid: int) -> int:
    with open(f"/proc/{pid}/stat", encoding="ascii", errors="replace") as file:
        return int(file.read().rpartition(")")[2].split()[19])


def register(bus: Bus, pid: int) -> None:
    def write_details(writer: Writer) -> None:
        writer.align(8).string("pid").signature("u").number("I", pid)
        writer.align(8).string("start-time").signature("t").number("Q", start_time(pid))

    body = Writer().string("unix-process").array_of_structs(write_details).string("C").string("/agent")
    bus.call(POLKIT, f"/{POLKIT.replace('.', '/')}/Authority", f"{POLKIT}.Authority", "RegisterAuthenticationAgent",
             "(sa{sv})ss", bytes(body.bytes))


def serve(bus: Bus, program: int) -> None:
    """Cancels until the program, a process descriptor, has ended."""
    while True:
        readable, _, _ = select.select([bus.socket, program], [], [])
        if program in readable:
            return
        kind, serial, fields, _ = bus.receive()
        if kind == CALL:
            fields = {REPLY_SERIAL: serial, DESTINATION: fields[SENDER]}
            bus.send(ERROR, {**fields, ERROR_NAME: f"{POLKIT}.Error.Cancelled"})


def dismiss_prompts_of(*pids: int) -> None:
    """Registers an agent for these processes and returns; a child cancels their prompts while the first one lives.

    Raises OSError if polkit refuses, for example because a process has an agent already or has ended."""
    program = os.pidfd_open(pids[0])
    bus = Bus()
    for pid in pids:
        register(bus, pid)
    if os.fork() == 0:
        try:
            serve(bus, program)
        finally:
            os._exit(0)
    bus.socket.close()
    os.close(program)
