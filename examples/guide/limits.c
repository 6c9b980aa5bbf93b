/*
 * Prints subject, end date and every DNS name of a certificate, also of one that KACert_DecodeCert refuses for its
 * dates: field by field, with the readers of karil/asn1.h.
 *
 *     limits CERTIFICATE
 */
#include "../example.h"

/* The nth element of a chain, from 0. */
static const Anybuf *at(const Anybuf *chain, int n) {
    while (chain != NULL && n-- > 0)
        chain = chain->next;
    return chain;
}

/* The content of an element as it stands. */
static int32_t printContent(const char *label, const Anybuf *element) {
    Anybuf *content = NULL;
    const int32_t status = KAsn1_ReadOctetString(element, &content);
    if (status == KACERT_Ok)
        printf("%s: %.*s\n", label, (int)content->length, (const char *)content->data);
    KI_FreeAnybuf(content);
    return status;
}

static int32_t printSubject(const Anybuf *name) {
    NameRecord head = {0};
    Anybuf text = {0};
    uint8_t utf8[1024];
    uint32_t length = 0;
    int32_t status = KI_DecodeIssuerSubject(name, &head);
    if (status == KACERT_Ok)
        status = KI_GetDN(&text, &head);
    if (status == KACERT_Ok)
        status = KI_Chinese2UTF8String(text.data, (int32_t)text.length, utf8, &length);
    if (status == KACERT_Ok)
        printf("subject: %.*s\n", (int)length, (const char *)utf8);
    KI_FreeName(head.next);
    KI_ClearAnybuf(&text);
    return status;
}

/* Extension ::= SEQUENCE { extnID, critical DEFAULT FALSE, extnValue OCTET STRING } */
static int32_t printDnsNames(const Anybuf *extension) {
    Anybuf *fields = NULL;
    Anybuf *value = NULL;
    Anybuf *names = NULL;
    int32_t status = KAsn1_ReadSequence(extension, &fields);
    if (status == KACERT_Ok && fields != NULL && fields->length == 2 + sizeof KARIL_OID_SUBJECT_ALT_NAME &&
        memcmp(fields->data + 2, KARIL_OID_SUBJECT_ALT_NAME, sizeof KARIL_OID_SUBJECT_ALT_NAME) == 0) {
        const Anybuf *last = fields;
        while (last->next != NULL)
            last = last->next;
        status = KAsn1_ReadOctetString(last, &value);
        if (status == KACERT_Ok)
            status = KAsn1_ReadSequence(value, &names);
        for (const Anybuf *name = names; status == KACERT_Ok && name != NULL; name = name->next)
            if (name->tag == 0x82) /* dNSName [2] */
                status = printContent("DNS name", name);
    }
    KI_FreeAnybuf(names);
    KI_FreeAnybuf(value);
    KI_FreeAnybuf(fields);
    return status;
}

/*
 * Certificate ::= SEQUENCE { SEQUENCE { [0] version DEFAULT, serialNumber, signature, issuer, validity, subject,
 * subjectPublicKeyInfo, ..., [3] extensions OPTIONAL }, ... }
 */
static int32_t print(const Anybuf *certificate) {
    Anybuf *parts = NULL;
    Anybuf *fields = NULL;
    Anybuf *dates = NULL;
    Anybuf *wrapped = NULL;
    Anybuf *extensions = NULL;
    uint32_t tag = 0;
    int32_t status = KAsn1_ReadSequence(certificate, &parts);
    if (status == KACERT_Ok)
        status = KAsn1_ReadSequence(parts, &fields); /* a null pointer is a status as well */
    const Anybuf *first = fields != NULL && fields->tag == 0xA0 ? fields->next : fields;
    if (status == KACERT_Ok)
        status = KAsn1_ReadSequence(at(first, 3), &dates);
    if (status == KACERT_Ok)
        status = printSubject(at(first, 4));
    if (status == KACERT_Ok)
        status = printContent("valid to", at(dates, 1));
    const Anybuf *last = at(first, 6);
    while (last != NULL && last->tag != 0xA3)
        last = last->next;
    if (status == KACERT_Ok && last != NULL) {
        status = KAsn1_ReadExplicit(last, &wrapped, &tag);
        if (status == KACERT_Ok)
            status = KAsn1_ReadSequence(wrapped, &extensions);
        for (const Anybuf *one = extensions; status == KACERT_Ok && one != NULL; one = one->next)
            status = printDnsNames(one);
    }
    KI_FreeAnybuf(extensions);
    KI_FreeAnybuf(wrapped);
    KI_FreeAnybuf(dates);
    KI_FreeAnybuf(fields);
    KI_FreeAnybuf(parts);
    return status;
}

int main(int argc, char **argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s CERTIFICATE\n", argv[0]);
        return 2;
    }
    const Octets der = readDer(argv[1]);
    const Anybuf certificate = {.data = der.data, .length = der.length};
    const int32_t status = print(&certificate);
    free(der.data);
    return outcome(argv[1], status);
}
