"""An authentication agent for polkit that cancels every request: the user dismisses the administrator prompt.

Without a login session polkit finds an agent only by the process that asks, so each program has an agent registered for
it. libsystemd, which dbus-daemon needs too, has the functions for D-Bus (sd-bus).
"""
import ctypes
import os
import select
from ctypes import byref, c_char_p, c_int, c_uint32, c_uint64, c_void_p

POLKIT = b"org.freedesktop.PolicyKit1"


class BusError(ctypes.Structure):
    """sd_bus_error."""

    _fields_ = [("name", c_char_p), ("message", c_char_p), ("need_free", c_int)]


def start_time(pid: int) -> int:
    with open(f"/proc/{pid}/stat", encoding="ascii", errors="replace") as file:
        return int(file.read().rpartition(")")[2].split()[19])


def checked(result: int) -> int:
    if result < 0:
        raise OSError(-result, f"the system bus: {os.strerror(-result)}")
    return result


def register(sd: ctypes.CDLL, bus: c_void_p, pid: int) -> None:
    """Makes this connection the agent of a process."""
    error = BusError()
    if sd.sd_bus_call_method(
            bus, POLKIT, b"/org/freedesktop/PolicyKit1/Authority", POLKIT + b".Authority",
            b"RegisterAuthenticationAgent", byref(error), None, b"(sa{sv})ss",
            b"unix-process", 2, b"pid", b"u", c_uint32(pid), b"start-time", b"t", c_uint64(start_time(pid)),
            b"C", b"/agent") < 0:
        raise OSError(f"polkit refuses the authentication agent: {(error.message or b'').decode()}")


def cancel_requests(sd: ctypes.CDLL, bus: c_void_p, program: int) -> None:
    """Cancels every request until the program, a process descriptor, has ended."""
    message = c_void_p()
    while program not in select.select([sd.sd_bus_get_fd(bus), program], [], [])[0]:
        while checked(sd.sd_bus_process(bus, byref(message))):
            if message and sd.sd_bus_message_is_method_call(message, None, None):
                checked(sd.sd_bus_reply_method_errorf(message, POLKIT + b".Error.Cancelled", b"dismissed"))


def dismiss_prompts_of(*pids: int) -> None:
    """Registers an agent for these processes and returns; a child cancels their prompts while the first one lives.

    Raises OSError if polkit refuses, for example because a process has an agent already or has ended."""
    program = os.pidfd_open(pids[0])
    registered, report = os.pipe()
    if os.fork() == 0:
        try:
            sd, bus = ctypes.CDLL("libsystemd.so.0"), c_void_p()
            checked(sd.sd_bus_open_system(byref(bus)))
            for pid in pids:
                register(sd, bus, pid)
            os.close(report)
            cancel_requests(sd, bus, program)
        except OSError as problem:
            os.write(report, str(problem).encode())
        finally:
            os._exit(0)
    os.close(program)
    os.close(report)
    with open(registered, encoding="utf-8") as refusal:
        if text := refusal.read():
            raise OSError(text)
