/* karil: public-key infrastructure objects in DER. Includes every family's header. */
#ifndef KARIL_KARIL_H
#define KARIL_KARIL_H

#include "karil/asn1.h"
#include "karil/asn1_low.h"
#include "karil/base.h"
#include "karil/cert.h"
#include "karil/cert_ext.h"
#include "karil/cert_gb.h"
#include "karil/crl.h"
#include "karil/crypt.h"
#include "karil/csr.h"
#include "karil/dn_string.h"
#include "karil/indefinite.h"
#include "karil/key.h"
#include "karil/name.h"
#include "karil/ocsp.h"
#include "karil/ocsp_request.h"
#include "karil/ocsp_response.h"
#include "karil/oid.h"
#include "karil/pem.h"
#include "karil/text.h"
#include "karil/verify.h"

#endif
