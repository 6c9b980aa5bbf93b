"""The one exception of the package."""

from __future__ import annotations

from ._tables import SENTENCES, Status


class Error(Exception):
    """A call of the library that failed.

    `status`: the number that it returned, a `Status` if it is one. `name`: such as "KACERT_InvalidTagErr". `text`: what
    it means, in a sentence.
    """

    def __init__(self, status: int, text: str | None = None) -> None:
        super().__init__(status, text)
        known = status in SENTENCES
        self.status = Status(status) if known else status
        self.name = Status(status).name if known else "unknown status"
        self.text = text or (SENTENCES[Status(status)] if known else "This number is no status of karil.")

    def __str__(self) -> str:
        return f"{self.name} ({int(self.status)}): {self.text}"
