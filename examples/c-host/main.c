/* A host application in C: it links the installed tavrinsdk through its C
 * interface, reads a device (a device profile, or the Linux machine it runs
 * on), collects one record against a scoring service and prints the answer.
 *
 *   tavrin-c-host --url URL --key KEY --record NUMBER
 *                 [--ca-file PEM] [--resolve HOST:PORT:ADDRESS]... [--profile JSON]
 *
 * The three options `tavrin sandbox` prints on its ready line (--url, --resolve,
 * --ca-file) can be passed as they are.
 *
 * Exit status: 0 the answer was printed; 1 the login or the collection failed
 * (the kind and message are printed); 2 wrong arguments. */
#include <tavrin/tavrin.h>

#include <stdio.h>
#include <string.h>

static const char usage[] =
    "usage: tavrin-c-host --url URL --key KEY --record NUMBER [--ca-file PEM]\n"
    "                     [--resolve HOST:PORT:ADDRESS]... [--profile JSON]\n";

/* Prints why a call failed and releases the error. */
static int report(const char* what, tavrin_error* error) {
  const char* message = tavrin_error_message(error);
  fprintf(stderr, "tavrin-c-host: %s failed: kind %d, HTTP status %d: %s\n", what,
          tavrin_error_kind(error), tavrin_error_http_status(error),
          message ? message : "(no message)");
  tavrin_error_free(error);
  return 1;
}

/* Reads the arguments into `options`; 0 when they are usable. */
static int parse(int argc, char** argv, tavrin_options* options, const char** url, const char** key,
                 const char** record) {
  for (int i = 1; i + 1 < argc; i += 2) {
    const char* option = argv[i];
    const char* value = argv[i + 1];
    int refused = 0;
    if (strcmp(option, "--url") == 0) {
      *url = value;
    } else if (strcmp(option, "--key") == 0) {
      *key = value;
    } else if (strcmp(option, "--record") == 0) {
      *record = value;
    } else if (strcmp(option, "--ca-file") == 0) {
      refused = tavrin_options_set_ca_file(options, value);
    } else if (strcmp(option, "--resolve") == 0) {
      refused = tavrin_options_add_resolve(options, value);
    } else if (strcmp(option, "--profile") == 0) {
      refused = tavrin_options_set_profile_file(options, value);
    } else {
      fprintf(stderr, "tavrin-c-host: unknown option %s\n", option);
      return -1;
    }
    if (refused) {
      fprintf(stderr, "tavrin-c-host: %s %s refused\n", option, value);
      return -1;
    }
  }
  return argc % 2 == 1 && *url && *key && *record ? 0 : -1;
}

int main(int argc, char** argv) {
  const char *url = NULL, *key = NULL, *record = NULL;
  tavrin_options* options = tavrin_options_new();
  if (options == NULL) return report("making the options", NULL);
  if (parse(argc, argv, options, &url, &key, &record) != 0) {
    fputs(usage, stderr);
    tavrin_options_free(options);
    return 2;
  }

  tavrin_error* error = NULL;
  tavrin_service* service = tavrin_service_new(url, key, options, &error);
  tavrin_options_free(options); /* the service keeps its own copy */
  if (service == NULL) return report("the login", error);

  char* answer = tavrin_service_collect(service, record, &error);
  tavrin_service_free(service);
  if (answer == NULL) return report("the collection", error);
  printf("%s\n", answer);
  tavrin_string_free(answer);
  return 0;
}
