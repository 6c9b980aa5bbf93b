"""Public-key infrastructure objects through the karil library: certificates, revocation lists, requests, PFX files,
signed and enveloped messages.

Input is any bytes-like object. What fails raises `Error`, with the status of the C library and its meaning; misuse is a
ValueError or TypeError. Decoded objects do not change, and threads can share them. Builders belong to one thread.
"""

from . import oids
from ._objects import Attribute, Extension
from ._tables import VERSION as __version__
from ._tables import Status
from .certificate import AlternativeNames, Certificate, CertificateBuilder, KeyUsage
from .crl import CertificateList, CertificateListBuilder, Reason, RevokedCertificate
from .enveloped import ContentCipher, EnvelopedData, Recipient, RecipientInfo
from .errors import Error
from .keys import RsaPrivateKey, RsaPublicKey
from .names import Name, NameAttribute
from .pfx import Pfx, PfxCertificate
from .request import CertificationRequest, CertificationRequestBuilder
from .signed import SignedData, Signer, SignerInfo

__all__ = [
    "AlternativeNames",
    "Attribute",
    "Certificate",
    "CertificateBuilder",
    "CertificateList",
    "CertificateListBuilder",
    "CertificationRequest",
    "CertificationRequestBuilder",
    "ContentCipher",
    "EnvelopedData",
    "Error",
    "Extension",
    "KeyUsage",
    "Name",
    "NameAttribute",
    "Pfx",
    "PfxCertificate",
    "Reason",
    "Recipient",
    "RecipientInfo",
    "RevokedCertificate",
    "RsaPrivateKey",
    "RsaPublicKey",
    "SignedData",
    "Signer",
    "SignerInfo",
    "Status",
    "__version__",
    "oids",
]
