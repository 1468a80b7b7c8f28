"""Python binding of tavrinsdk over its C interface (<tavrin/tavrin.h>), with ctypes.

    from tavrin import Service, Options
    with Service("https://api.tavrin.com", key, Options(deadline_ms=30000)) as service:
        print(service.collect("order-1"))

The shared library is found through the TAVRIN_LIBRARY environment variable (a path), or
else by the system's loader as libtavrinsdk.so.1. A phone of the host's own is described by
a Platform subclass (see Platform). Every failure raises TavrinError.
"""
import ctypes
import dataclasses
import enum
import json
import os
from typing import Callable, Optional, Sequence

__all__ = ["Kind", "Permission", "Authorization", "TavrinError", "Options", "Platform",
           "Prompt", "Service", "version"]


class Kind(enum.IntEnum):
    """The kind of a TavrinError: the values of tavrin_error_kind()."""
    INVALID_INPUT = 0
    CONNECTION_FAILED = 1
    ACCESS_DENIED = 2
    SERVER_REJECTED = 3
    PROCESSING_FAILED = 4
    CANCELLED = 5
    DATASET_NOT_JSON = 100
    DEVICE_PROFILE = 101
    OUT_OF_MEMORY = 102


class Permission(enum.IntEnum):
    """The four permissions a collection may ask for."""
    PHOTO_LIBRARY = 0
    CONTACTS = 1
    CALENDAR_EVENTS = 2
    REMINDERS = 3


class Authorization(enum.IntEnum):
    """Raw authorization statuses; only AUTHORIZED grants access."""
    NOT_DETERMINED = 0
    RESTRICTED = 1
    DENIED = 2
    AUTHORIZED = 3
    LIMITED = 4


class TavrinError(Exception):
    """Why a call failed: its kind, its message (None when it has none), the HTTP status of
    the answer that failed the exchange (0 for none), that answer's request id and the
    transport's reason."""

    def __init__(self, kind: int, message: Optional[str], http_status: int = 0,
                 request_id: str = "", transport_reason: str = ""):
        super().__init__(f"{_kind_name(kind)}: {message}" if message else _kind_name(kind))
        self.kind = kind
        self.message = message
        self.http_status = http_status
        self.request_id = request_id
        self.transport_reason = transport_reason


def _kind_name(kind: int) -> str:
    try:
        return Kind(kind).name
    except ValueError:
        return f"kind {kind}"


_STATUS = ctypes.CFUNCTYPE(ctypes.c_longlong, ctypes.c_void_p, ctypes.c_int)
_REQUEST = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_int, ctypes.c_void_p)
_DESCRIBE = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_char_p, ctypes.c_void_p)
_LOG = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_int, ctypes.c_char_p)


class _CPlatform(ctypes.Structure):
    _fields_ = [("context", ctypes.c_void_p), ("authorization_status", _STATUS),
                ("request_access", _REQUEST), ("describe", _DESCRIBE)]


def _load() -> ctypes.CDLL:
    lib = ctypes.CDLL(os.environ.get("TAVRIN_LIBRARY") or "libtavrinsdk.so.1")
    p, s, i, ll = ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int, ctypes.c_longlong
    signatures = {
        "tavrin_version": (s, []),
        "tavrin_options_new": (p, []),
        "tavrin_options_free": (None, [p]),
        "tavrin_options_set_ca_file": (i, [p, s]),
        "tavrin_options_add_resolve": (i, [p, s]),
        "tavrin_options_set_deadline_ms": (i, [p, ll]),
        "tavrin_options_set_profile_file": (i, [p, s]),
        "tavrin_options_set_platform": (i, [p, ctypes.POINTER(_CPlatform)]),
        "tavrin_options_set_log": (i, [p, _LOG, p]),
        "tavrin_service_new": (p, [s, s, p, ctypes.POINTER(p)]),
        "tavrin_service_collect": (p, [p, s, ctypes.POINTER(p)]),
        "tavrin_service_preview": (p, [p, ctypes.POINTER(p)]),
        "tavrin_service_cancel": (None, [p]),
        "tavrin_service_free": (None, [p]),
        "tavrin_error_kind": (i, [p]),
        "tavrin_error_message": (s, [p]),
        "tavrin_error_http_status": (i, [p]),
        "tavrin_error_request_id": (s, [p]),
        "tavrin_error_transport_reason": (s, [p]),
        "tavrin_error_free": (None, [p]),
        "tavrin_string_free": (None, [p]),
        "tavrin_prompt_complete": (i, [p, ll, s]),
        "tavrin_answer_json": (i, [p, s, ctypes.c_size_t]),
    }
    for name, (result, arguments) in signatures.items():
        function = getattr(lib, name)
        function.restype = result
        function.argtypes = arguments
    return lib


_lib = _load()


def version() -> str:
    """The library's version, for example "1.0.0"."""
    return _lib.tavrin_version().decode()


def _text(value: Optional[str]) -> Optional[bytes]:
    return None if value is None else value.encode()


def _raise(error: ctypes.c_void_p) -> None:
    """Raises the TavrinError of a C error object, which it releases."""
    try:
        message = _lib.tavrin_error_message(error)
        raise TavrinError(_lib.tavrin_error_kind(error),
                          None if message is None else message.decode(errors="replace"),
                          _lib.tavrin_error_http_status(error),
                          _lib.tavrin_error_request_id(error).decode(errors="replace"),
                          _lib.tavrin_error_transport_reason(error).decode(errors="replace"))
    finally:
        _lib.tavrin_error_free(error)


def _taken_string(pointer: int) -> str:
    """The text of a string the library returned, which it releases."""
    try:
        return ctypes.string_at(pointer).decode()
    finally:
        _lib.tavrin_string_free(pointer)


class Prompt:
    """A permission prompt the host shows; complete it exactly once, from any thread."""

    def __init__(self, pointer: int):
        self._pointer = pointer

    def complete(self, status: int, error: Optional[str] = None) -> None:
        """Answers with the raw status the user's answer leaves, and a failed prompt's
        description. A second call raises RuntimeError."""
        if self._pointer is None:
            raise RuntimeError("the prompt is already complete")
        pointer, self._pointer = self._pointer, None
        _lib.tavrin_prompt_complete(pointer, int(status), _text(error))


class Platform:
    """The phone of the host, answered from Python. Override what the phone has; what is
    not overridden is denied or empty.

    - authorization_status(permission) -> an Authorization value, now.
    - request_access(permission, prompt): show the prompt, and call prompt.complete(status)
      once, now or later from any thread.
    - describe(section) -> the JSON (a str, or a value to encode) of that member of a device
      profile ("device", "contacts", "calendars", "events", "reminders", "photos",
      "captureDevices", "location", "clock", "random"), or None for nothing.

    Called on the thread that runs the collection. An exception in a callback is taken as
    no answer: a denied status, a prompt completed as denied, or a member not given."""

    def authorization_status(self, permission: Permission) -> int:
        return Authorization.DENIED

    def request_access(self, permission: Permission, prompt: Prompt) -> None:
        prompt.complete(self.authorization_status(permission))

    def describe(self, section: str):
        return None


class _PlatformBridge:
    """The C callbacks of a Python platform, kept alive as long as a service uses them."""

    def __init__(self, platform: Platform):
        self.platform = platform
        self.callbacks = (_STATUS(self._status), _REQUEST(self._request),
                          _DESCRIBE(self._describe))
        self.struct = _CPlatform(None, *self.callbacks)

    def _status(self, _context, permission):
        try:
            return int(self.platform.authorization_status(Permission(permission)))
        except Exception:  # a callback must not raise into C
            return Authorization.DENIED

    def _request(self, _context, permission, pointer):
        prompt = Prompt(pointer)
        try:
            self.platform.request_access(Permission(permission), prompt)
        except Exception as failure:  # the prompt still completes, or the run would wait
            if prompt._pointer is not None:
                prompt.complete(Authorization.DENIED, str(failure))

    def _describe(self, _context, section, answer):
        try:
            value = self.platform.describe(section.decode())
            if value is None:
                return
            data = (value if isinstance(value, str) else json.dumps(value)).encode()
        except Exception:
            return
        _lib.tavrin_answer_json(answer, data, len(data))


@dataclasses.dataclass
class Options:
    """How a service reaches its device and its server: a CA file instead of the system
    store, "HOST:PORT:ADDRESS" entries that replace name resolution, the longest a login,
    collection or preview may take (0 for no limit), and the device: a device-profile file or
    a Platform (the last given wins when both are). `log` receives (level, line)."""
    ca_file: Optional[str] = None
    resolve: Sequence[str] = ()
    deadline_ms: int = 0
    profile_file: Optional[str] = None
    platform: Optional[Platform] = None
    log: Optional[Callable[[int, str], None]] = None


class Service:
    """A service logged in with `key` at `url`; one collection at a time. Raises TavrinError
    when the login fails. Release it with close(), or use it in a with statement."""

    def __init__(self, url: str, key: str, options: Optional[Options] = None):
        self._handle = None
        self._keep = []  # the callbacks the library calls, alive as long as the service
        made = _lib.tavrin_options_new()
        if not made:
            raise MemoryError()
        try:
            self._configure(made, options or Options())
            error = ctypes.c_void_p()
            handle = _lib.tavrin_service_new(_text(url), _text(key), made, ctypes.byref(error))
        finally:
            _lib.tavrin_options_free(made)
        if not handle:
            _raise(error)
        self._handle = handle

    def _configure(self, made: int, options: Options) -> None:
        settings = [_lib.tavrin_options_set_ca_file(made, _text(options.ca_file)),
                    _lib.tavrin_options_set_deadline_ms(made, options.deadline_ms)]
        settings += [_lib.tavrin_options_add_resolve(made, _text(entry))
                     for entry in options.resolve]
        if options.profile_file is not None:
            settings.append(_lib.tavrin_options_set_profile_file(made, _text(options.profile_file)))
        if options.platform is not None:
            bridge = _PlatformBridge(options.platform)
            self._keep.append(bridge)
            settings.append(_lib.tavrin_options_set_platform(made, ctypes.byref(bridge.struct)))
        if options.log is not None:
            log = options.log
            callback = _LOG(lambda _context, level, line: log(level, line.decode(errors="replace")))
            self._keep.append(callback)
            settings.append(_lib.tavrin_options_set_log(made, callback, None))
        if any(result != 0 for result in settings):
            raise TavrinError(Kind.INVALID_INPUT, "an option was refused")

    def collect(self, record_number: str) -> str:
        """Asks for undecided permissions, checks the record number, collects and uploads
        the dataset; returns the server's answer. Blocks; cancel() stops it."""
        error = ctypes.c_void_p()
        answer = _lib.tavrin_service_collect(self._live(), _text(record_number),
                                             ctypes.byref(error))
        if not answer:
            _raise(error)
        return _taken_string(answer)

    def preview(self) -> str:
        """The dataset's JSON a collection would upload now, made without network traffic."""
        error = ctypes.c_void_p()
        dataset = _lib.tavrin_service_preview(self._live(), ctypes.byref(error))
        if not dataset:
            _raise(error)
        return _taken_string(dataset)

    def cancel(self) -> None:
        """Stops the run in progress within 100 ms, or the next one at its start. Any
        thread."""
        if self._handle:
            _lib.tavrin_service_cancel(self._handle)

    def close(self) -> None:
        """Releases the service; no call may be in progress."""
        handle, self._handle = self._handle, None
        if handle:
            _lib.tavrin_service_free(handle)

    def _live(self) -> int:
        if not self._handle:
            raise TavrinError(Kind.INVALID_INPUT, "the service is closed")
        return self._handle

    def __enter__(self) -> "Service":
        return self

    def __exit__(self, *_exception) -> None:
        self.close()

    def __del__(self) -> None:
        self.close()
