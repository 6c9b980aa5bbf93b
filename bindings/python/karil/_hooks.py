"""Python callables as hooks of the library.

One C function serves all hooks. The octets that the library copies as a hook's parameter are a handle of the Python
object, which lives as long as the operation that calls it. An exception of a callable stops the operation and comes out
of it as it is.
"""

from __future__ import annotations

from typing import Any, Callable

from ._native import BytesLike, check, ffi, octets
from ._tables import Status
from .errors import Error

HookFunction = Callable[[bytes], BytesLike]

# What the C function returns after an exception. The library hands it on, and no status has this number.
_RAISED = -2


class Operation:
    """A call of the library that calls hooks, and what they need until it is done.

    An encoder runs twice, for the length and for the octets, and would run the hooks twice. So what they returned in
    the first run is handed out again in the second, in the same order: each callable is called once, and the second run
    cannot need more room than the first one told.
    """

    def __init__(self) -> None:
        self._handles: list[Any] = []
        self._results: list[bytes] = []
        self._replayed: int | None = None
        self._failure: BaseException | None = None

    def hook(self, function: HookFunction) -> tuple[Any, Any, int]:
        """The arguments (hook, parameter, length) of the functions that store a hook."""
        handle = ffi.new_handle(_Hook(self, function))
        parameter = ffi.new("void *[1]", [handle])
        self._handles += [handle, parameter]
        return _call, parameter, ffi.sizeof(parameter)

    def run(self, function: Any, *arguments: Any) -> None:
        """Calls a function that returns a status, and raises what a hook raised."""
        status = function(*arguments)
        if self._failure is not None:
            failure, self._failure = self._failure, None
            raise failure
        check(status)

    def filled(self, function: Any, *arguments: Any) -> bytes:
        """Calls an encoder for the length, and then for the octets."""
        length = ffi.new("uint32_t *")
        self.run(function, *arguments, ffi.NULL, length)
        if length[0] == 0:
            raise Error(Status.KACERT_MemoryErr)
        result = ffi.new("uint8_t[]", length[0])
        self._replayed = 0
        self.run(function, *arguments, result, length)
        return bytes(ffi.buffer(result, length[0]))

    def result(self, function: HookFunction, source: Any, length: int) -> bytes:
        if self._replayed is not None:
            self._replayed += 1
            return self._results[self._replayed - 1]
        self._results.append(octets(function(bytes(ffi.buffer(source, length)) if length else b"")))
        return self._results[-1]

    def fail(self, failure: BaseException) -> int:
        self._failure = failure
        return _RAISED


class _Hook:
    def __init__(self, operation: Operation, function: HookFunction) -> None:
        self._operation = operation
        self._function = function
        self._sized: bytes | None = None

    def run(self, source: Any, length: int, output: Any, room: Any) -> int:
        try:
            result = self._sized
            if result is None:
                result = self._operation.result(self._function, source, length)
            if not output:
                # A call for the size, which the call for the octets follows.
                self._sized = result
            else:
                self._sized = None
                if len(result) > room[0]:
                    raise ValueError(f"a hook returned {len(result)} octets, and the library takes {room[0]}")
                ffi.memmove(output, result, len(result))
            room[0] = len(result)
            return 0
        except BaseException as failure:
            return self._operation.fail(failure)


@ffi.callback("KAHookFunc", error=_RAISED)  # type: ignore[misc]
def _call(source: Any, length: int, output: Any, room: Any, parameter: Any) -> int:
    if not parameter:
        # The first call for a certificate: there is nothing to do.
        return 0
    hook: _Hook = ffi.from_handle(ffi.cast("void **", parameter)[0])
    return hook.run(source, length, output, room)
