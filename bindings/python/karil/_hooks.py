"""Python callables as hooks of the library.

One C function serves all hooks. The octets that the library copies as a hook's parameter are a handle of the Python
object, which lives as long as the operation that calls it. An exception of a callable stops the operation and comes out
of it as it is.
"""

from __future__ import annotations

import weakref
from typing import Any, Callable

from ._native import BytesLike, check, ffi, measured, octets, with_room
from ._tables import Status
from .errors import Error

HookFunction = Callable[[bytes], BytesLike]

# What the C function returns after an exception. The library hands it on, and no status has this number.
_RAISED = -2


class Operation:
    """A call of the library that calls hooks, and what they need until it is done.

    An encoder runs twice, for the length and for the octets, and would run the hooks twice. So what a hook returned for
    some octets in the first run is handed out again in the second: each callable is called once, and the second run
    cannot need more room than the first one told.
    """

    def __init__(self) -> None:
        self.is_measured = False
        self._handles: list[Any] = []
        self._failure: BaseException | None = None

    def hook(self, function: HookFunction) -> tuple[Any, Any, int]:
        """The arguments (hook, parameter, length) of the functions that store a hook."""
        # No cycle: what a callable was given and returned is freed at the end of the call, not by a later collection.
        handle = ffi.new_handle(_Hook(weakref.proxy(self), function))
        parameter = ffi.new("void *[1]", [handle])
        self._handles += [handle, parameter]
        return _call, parameter, ffi.sizeof(parameter)

    def run(self, function: Any, *arguments: Any) -> None:
        """Calls a function that returns a status, and raises what a hook raised."""
        status = function(*arguments)
        if self._failure is not None:
            try:
                raise self._failure
            finally:
                self._failure = None
        check(status)

    def with_room(self, room: int, function: Any, *arguments: Any) -> bytes:
        """Calls a function once, with a buffer that is large enough."""
        return with_room(room, function, *arguments, run=self.run)

    def filled(self, function: Any, *arguments: Any) -> bytes:
        """Calls an encoder for the length, and then for the octets."""
        room = measured(function, *arguments, run=self.run)
        if room == 0:
            # So encoders of messages say that there is not enough memory.
            raise Error(Status.KACERT_MemoryErr)
        self.is_measured = True
        return self.with_room(room, function, *arguments)

    def fail(self, failure: BaseException) -> int:
        self._failure = failure
        return _RAISED


class _Hook:
    def __init__(self, operation: Operation, function: HookFunction) -> None:
        self._operation = operation
        self._function = function
        self._results: dict[bytes, bytes] = {}

    def run(self, source: Any, length: int, output: Any, room: Any) -> int:
        try:
            result = self._result(bytes(ffi.buffer(source, length)) if length else b"")
            if output:
                if len(result) > room[0]:
                    raise ValueError(f"a hook returned {len(result)} octets, and the library takes {room[0]}")
                ffi.memmove(output, result, len(result))
            room[0] = len(result)
            return 0
        except BaseException as failure:
            return self._operation.fail(failure)

    def _result(self, source: bytes) -> bytes:
        """Calls for the size and for the octets, and second runs, come with the same octets."""
        if source not in self._results:
            if self._operation.is_measured:
                raise RuntimeError("the library gives a hook other octets in its second run")
            self._results[source] = octets(self._function(source))
        return self._results[source]


@ffi.callback("KAHookFunc", error=_RAISED)  # type: ignore[misc]
def _call(source: Any, length: int, output: Any, room: Any, parameter: Any) -> int:
    if not parameter:
        # The first call for a certificate: there is nothing to do.
        return 0
    hook: _Hook = ffi.from_handle(ffi.cast("void **", parameter)[0])
    return hook.run(source, length, output, room)
