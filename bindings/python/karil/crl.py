"""Certificate revocation lists."""

from __future__ import annotations

from datetime import datetime
from enum import IntEnum
from typing import Iterator, NamedTuple, Optional

from . import oids
from ._der import number, number_octets
from ._hooks import HookFunction
from ._native import chain, check, data_of, ffi, lib
from ._objects import Builder, Extension, Signed, moment, seconds_of, tagged_extensions
from .certificate import Certificate
from .names import Name, read_name

_EXTENSIONS_TAG = 0xA0


class Reason(IntEnum):
    """Why a certificate was revoked (RFC 5280 5.3.1)."""

    UNSPECIFIED = 0
    KEY_COMPROMISE = 1
    CA_COMPROMISE = 2
    AFFILIATION_CHANGED = 3
    SUPERSEDED = 4
    CESSATION_OF_OPERATION = 5
    CERTIFICATE_HOLD = 6
    REMOVE_FROM_CRL = 8
    PRIVILEGE_WITHDRAWN = 9
    AA_COMPROMISE = 10


class RevokedCertificate(NamedTuple):
    """An entry of a list. `reason`: a plain number if it is no `Reason`."""

    serial: int
    date: datetime
    reason: Optional[int]


_REASONS = {reason.value: reason for reason in Reason}


class CertificateList(Signed):
    """A decoded list. Iterating over it yields its entries, in one walk that costs as much as the list is long."""

    _functions = (lib.KACert_CreateCrlDecodeCtx, lib.KACert_DestroyCrlDecodeCtx, lib.KACert_DecodeCrl)
    _labels = ("X509 CRL",)

    def __repr__(self) -> str:
        return f"<karil.CertificateList of {self.issuer.text!r}, {self.this_update}>"

    def __iter__(self) -> Iterator[RevokedCertificate]:
        for entry in chain(self._ctx, self._ctx.firstRevoked):
            reason = number(data_of(entry.reason)) if entry.hasReason else None
            yield RevokedCertificate(
                number(data_of(entry.serialNumber)),
                moment(entry.revocationDate.utcValue),
                None if reason is None else _REASONS.get(reason, reason),
            )

    @property
    def issuer(self) -> Name:
        """The authority that signs the list."""
        return read_name(self._ctx, self._ctx.issuer)

    @property
    def this_update(self) -> datetime:
        """In the local zone, as the dates of certificates."""
        return moment(self._ctx.thisUpdate.utcValue)

    @property
    def next_update(self) -> Optional[datetime]:
        """When the next list comes, or None."""
        return moment(self._ctx.nextUpdate.utcValue) if self._ctx.hasNextUpdate else None

    @property
    def number(self) -> Optional[int]:
        """The number of the list (RFC 5280 5.2.3)."""
        extensions = self._ctx.extensions
        return number(data_of(extensions.crlNumber.value)) if extensions.hasCrlNumber else None

    @property
    def base_number(self) -> Optional[int]:
        """Of a delta CRL: the number of the list that it adds to (RFC 5280 5.2.4)."""
        extensions = self._ctx.extensions
        return number(data_of(extensions.deltaCrl.value)) if extensions.hasDeltaCrl else None

    @property
    def extensions(self) -> tuple[Extension, ...]:
        """All extensions of the list, in the order of the wire."""
        return tagged_extensions(self.tbs, _EXTENSIONS_TAG)

    def verify(self, issuer: Certificate) -> None:
        """Verifies name and signature against the issuer's certificate, as `Certificate.verify` does. No date is
        looked at."""
        check(lib.KA_VerifyCrl(issuer.der, len(issuer.der), self.der, len(self.der)))


class CertificateListBuilder(Builder):
    """Makes a list: fill it, then call `sign`. The methods return the builder.

    `issuer`: its certificate, which gives name and authority key identifier.
    """

    def __init__(
        self,
        *,
        issuer: Certificate,
        this_update: datetime,
        next_update: Optional[datetime] = None,
        number: Optional[int] = None,
        base_number: Optional[int] = None,
    ) -> None:
        out = ffi.new("CrlEncodeCtx **")
        check(lib.KACert_CreateCrlEncodeCtx_Ex(out, issuer.der, len(issuer.der)))
        ctx = ffi.gc(out[0], lib.KACert_DestroyCrlEncodeCtx)
        algorithms = "CRL_INNER_SIGNATUREALGORITHM", "CRL_OUTER_SIGNATUREALGORITHM"
        super().__init__(ctx, lib.KACert_EncodeCrl, lib.KACert_SetCrlAttributeChar, *algorithms)
        check(lib.KACert_SetCrlAttributeInt(ctx, lib.CRL_VERSION, 1))
        check(lib.KACert_SetCrlAttributeInt(ctx, lib.CRL_THISUPDATE, seconds_of(this_update)))
        if next_update is not None:
            check(lib.KACert_SetCrlAttributeInt(ctx, lib.CRL_NEXTUPDATE, seconds_of(next_update)))
        for name, value in (("CRLEX_CRLNUMBER", number), ("CRLEX_DELTACRLINDICATOR", base_number)):
            if value is not None:
                self._put(name, number_octets(value))

    def revoke(self, serial: int, date: datetime, reason: Optional[Reason] = None) -> CertificateListBuilder:
        """Appends an entry."""
        seconds = seconds_of(date)
        self._put("CRL_CERT_SERIALNUMBER", number_octets(serial))
        check(lib.KACert_SetCrlAttributeInt(self._ctx, lib.CRL_CERT_REVOCATIONDATE, seconds))
        if reason is not None:
            self._put("CRLEX_CRLREASON", bytes([reason]))
        return self

    def carry_over(self, earlier: CertificateList) -> CertificateListBuilder:
        """Writes the entries of an earlier list before those of this one, as they are."""
        check(lib.setCRL2Context(self._ctx, earlier.der, len(earlier.der)))
        return self

    def sign(self, sign: HookFunction, algorithm: str = oids.SHA256_WITH_RSA) -> CertificateList:
        """Signs, and returns the list; `sign` as for `CertificateBuilder.sign`, of below 10,240 octets."""
        return CertificateList(self._sign(lib.KACert_SetCrlSignFunc, sign, algorithm))
