/*
 * Four threads verify the same certificate under the same issuer, and decode it.
 *
 *     threads ISSUER CERTIFICATE        run it with TZ=UTC
 */
#include "../example.h"

#include <pthread.h>

enum { Threads = 4, Rounds = 500 };

/* A thread's own, but for the octets, which all only read. */
typedef struct Worker {
    pthread_t thread;
    Octets issuer;
    Octets certificate;
    int32_t status;
} Worker;

/* Contexts are made, used and destroyed in one thread. They share nothing with those of other threads. */
static int32_t work(const Worker *worker) {
    CertDecodeCtx *cert = NULL;
    int32_t status =
        KA_VerifyCert(worker->issuer.data, worker->issuer.length, worker->certificate.data, worker->certificate.length);
    if (status == KACERT_Ok)
        status = KACert_CreateCertDecodeCtx(&cert);
    if (status == KACERT_Ok)
        status = KACert_DecodeCert(cert, worker->certificate.data, worker->certificate.length);
    KACert_DestroyCertDecodeCtx(cert);
    return status;
}

static void *run(void *argument) {
    Worker *worker = argument;
    for (int round = 0; round < Rounds && worker->status == KACERT_Ok; ++round)
        worker->status = work(worker);
    return NULL;
}

int main(int argc, char **argv) {
    Worker workers[Threads];
    int32_t status = KACERT_Ok;
    if (argc != 3) {
        fprintf(stderr, "usage: %s ISSUER CERTIFICATE\n", argv[0]);
        return 2;
    }
    const Octets issuer = readDer(argv[1]);
    const Octets certificate = readDer(argv[2]);
    for (int i = 0; i < Threads; ++i) {
        workers[i] = (Worker){.issuer = issuer, .certificate = certificate, .status = KACERT_Ok};
        if (pthread_create(&workers[i].thread, NULL, run, &workers[i]) != 0) {
            perror("pthread_create");
            exit(1);
        }
    }
    for (int i = 0; i < Threads; ++i) {
        pthread_join(workers[i].thread, NULL);
        if (status == KACERT_Ok)
            status = workers[i].status;
    }
    if (status == KACERT_Ok)
        printf("%d threads, %d times each: good\n", Threads, Rounds);
    free(issuer.data);
    free(certificate.data);
    return outcome(argv[2], status);
}
