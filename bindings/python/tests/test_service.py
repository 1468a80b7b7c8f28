"""The Python binding against `tavrin sandbox` run as a process: a collection, each kind of
error, cancellation from another thread, and a phone described by a Python platform."""
import json
import threading

import pytest

from conftest import REALISTIC_PHONE
from tavrin import Authorization, Kind, Permission, Platform, Service, TavrinError, version


class DescribedPhone(Platform):
    """A phone described from a device profile's members. Undecided permissions take the
    profile's answer when their prompt completes, on a thread of the phone's own; with
    `hold`, prompts wait in `held` instead."""

    def __init__(self, profile: dict, hold: bool = False):
        self.profile = profile
        self.hold = hold
        self.held = []
        self.prompted = threading.Event()
        self.threads = []
        self.lock = threading.Lock()

    def setting(self, permission):
        names = ["photoLibrary", "contacts", "calendarEvents", "reminders"]
        return self.profile["permissions"][names[permission]]

    def authorization_status(self, permission):
        with self.lock:
            return self.setting(permission)["status"]

    def request_access(self, permission, prompt):
        if self.hold:
            self.held.append(prompt)
            self.prompted.set()
            return

        def answer():
            with self.lock:
                setting = self.setting(permission)
                setting["status"] = setting.get("answer", setting["status"])
                status = setting["status"]
            prompt.complete(status)

        thread = threading.Thread(target=answer)
        self.threads.append(thread)
        thread.start()

    def describe(self, section):
        return self.profile.get(section)


def realistic() -> dict:
    return json.loads(REALISTIC_PHONE.read_text())


def test_collects_one_record(sandbox):
    lines = []
    options = sandbox.options(profile_file=str(REALISTIC_PHONE),
                              log=lambda level, line: lines.append(line))
    with Service(sandbox.url, "sandbox-key", options) as service:
        assert service.collect("py-1") == 'accepted record "py-1" as upload 1'
        assert json.loads(service.preview())  # the dataset is JSON
    assert any("collection done" in line for line in lines)
    assert version() == "1.0.0"


@pytest.mark.parametrize("faults, url, key, profile, record, kind, message, status", [
    ((), "ftp://x", "sandbox-key", REALISTIC_PHONE, "e-1", Kind.INVALID_INPUT,
     "Url is incorrect", 0),
    ((), None, "wrong-key", REALISTIC_PHONE, "e-1", Kind.INVALID_INPUT,
     "invalid_grant_key. Authentication key is invalid", 401),
    ((), None, "sandbox-key", "/nonexistent.json", "e-1", Kind.DEVICE_PROFILE,
     "/nonexistent.json: cannot read the file: No such file or directory", 0),
    (("check:drop",), None, "sandbox-key", REALISTIC_PHONE, "e-1", Kind.CONNECTION_FAILED,
     None, 0),
    (("upload:error=403/action_forbidden/Plan expired",), None, "sandbox-key", REALISTIC_PHONE,
     "e-1", Kind.ACCESS_DENIED, "action_forbidden. Plan expired", 403),
    (("check:status=503",), None, "sandbox-key", REALISTIC_PHONE, "e-1", Kind.SERVER_REJECTED,
     None, 503),
    (("upload:status=302",), None, "sandbox-key", REALISTIC_PHONE, "e-1",
     Kind.PROCESSING_FAILED, None, 302),
])
def test_each_kind_of_error(sandbox_with, faults, url, key, profile, record, kind, message,
                            status):
    sandbox = sandbox_with(*faults)
    with pytest.raises(TavrinError) as caught:
        with Service(url or sandbox.url, key, sandbox.options(profile_file=str(profile))) as s:
            s.collect(record)
    assert caught.value.kind == kind
    if message is not None:
        assert caught.value.message == message
    assert caught.value.http_status == status
    assert (caught.value.transport_reason != "") == (kind == Kind.CONNECTION_FAILED)


def test_taken_record_is_rejected(sandbox):
    with Service(sandbox.url, "sandbox-key", sandbox.options(profile_file=str(REALISTIC_PHONE))) as s:
        s.collect("t-1")
        with pytest.raises(TavrinError) as caught:
            s.collect("t-1")
    assert caught.value.kind == Kind.SERVER_REJECTED
    assert caught.value.message == "record_number_not_unique. Record number is not unique"


def test_cancel_from_another_thread_stops_a_waiting_prompt(sandbox):
    profile = realistic()
    profile["permissions"]["contacts"] = {"status": Authorization.NOT_DETERMINED}
    phone = DescribedPhone(profile, hold=True)
    with Service(sandbox.url, "sandbox-key", sandbox.options(platform=phone)) as service:
        canceller = threading.Thread(target=lambda: (phone.prompted.wait(30), service.cancel()))
        canceller.start()
        with pytest.raises(TavrinError) as caught:
            service.collect("c-1")
        canceller.join()
        assert caught.value.kind == Kind.CANCELLED
        phone.held[0].complete(Authorization.AUTHORIZED)  # late, and harmless
        with pytest.raises(RuntimeError):
            phone.held[0].complete(Authorization.AUTHORIZED)
        # The prompt is asked again in the next run, which the phone now answers.
        phone.hold = False
        assert service.collect("c-1") == 'accepted record "c-1" as upload 1'


def test_python_platform_gives_the_profiles_dataset(sandbox):
    with Service(sandbox.url, "sandbox-key",
                 sandbox.options(profile_file=str(REALISTIC_PHONE))) as service:
        expected = service.preview()
    profile = realistic()
    for permission in Permission:
        DescribedPhone(profile).setting(permission).update(
            status=Authorization.NOT_DETERMINED, answer=Authorization.AUTHORIZED)
    phone = DescribedPhone(profile)
    with Service(sandbox.url, "sandbox-key", sandbox.options(platform=phone)) as service:
        assert service.preview() == expected
    assert len(phone.threads) == 4  # each prompt answered on the phone's own thread
    for thread in phone.threads:
        thread.join()


def test_malformed_member_is_a_device_profile_error(sandbox):
    profile = realistic()
    profile["contacts"] = {"list": [{"identifier": 5}]}
    with Service(sandbox.url, "sandbox-key",
                 sandbox.options(platform=DescribedPhone(profile))) as service:
        with pytest.raises(TavrinError) as caught:
            service.preview()
    assert caught.value.kind == Kind.DEVICE_PROFILE
    assert caught.value.message == "host platform: /contacts/list/0/identifier: expected a string"
