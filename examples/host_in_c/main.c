// A host in C, without the C++ API: it loads the component itself, gives it a lookup of its own,
// and speaks to the registered tables:
//     host_in_c COMPONENT FILE
// The lookup hands the host's own procedure out for reports, and all else of the in-process
// runtime.
#include <api/BIBContainerInterface.h>
#include <api/BIBRuntime.h>
#include <api/PDFSettings.h>
#include <api/POSCollectionInterfaces.h>
#include <api/POSScalarInterfaces.h>
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int Report(char const* message) {
    printf("reported: %s\n", message);
    return 1;
}

static void* Lookup(char const* interfaceName, char const* procName, char const* procType) {
    if (strcmp(procName, "BIBReportError") == 0) {
        return (void*)&Report;
    }
    return BIBRuntimeLookup(interfaceName, procName, procType);
}

// A table is a structure of procedures, filled from the same rows that name them.
#define FIND(operation, procType) (procType) FindRow(INTERFACE, #operation, #procType),

static void* FindRow(char const* interfaceName, char const* operation, char const* procType) {
    void* const proc = Lookup(interfaceName, operation, procType);
    if (proc == NULL) {
        fprintf(stderr, "%s has no %s\n", interfaceName, operation);
        exit(1);
    }
    return proc;
}

typedef struct Settings {
    PDF_SETTINGS_INTERFACE_ROWS(BIB_TABLE_SLOT)
} Settings;
typedef _t_BIBContainerInterface Containers;
typedef _t_POSArrayInterface Arrays;
typedef _t_BIBSharedBuffInterface Buffers;

static Settings FindSettings(void) {
#define INTERFACE "PDFSettingsInterface"
    Settings const table = {PDF_SETTINGS_INTERFACE_ROWS(FIND)};
#undef INTERFACE
    return table;
}

static Containers FindContainers(void) {
#define INTERFACE "BIBContainerInterface"
    Containers const table = {BIB_CONTAINER_INTERFACE_ROWS(FIND)};
#undef INTERFACE
    return table;
}

static Arrays FindArrays(void) {
#define INTERFACE "POSArrayInterface"
    Arrays const table = {POS_ARRAY_INTERFACE_ROWS(FIND)};
#undef INTERFACE
    return table;
}

static Buffers FindBuffers(void) {
#define INTERFACE "BIBSharedBuffInterface"
    Buffers const table = {BIB_SHARED_BUFF_INTERFACE_ROWS(FIND)};
#undef INTERFACE
    return table;
}

// A path as the component takes it: UTF-16 units. This host's paths are ASCII.
static BIBSharedBuffer* MakePath(Buffers const* buffers, char const* path) {
    unsigned long const length = strlen(path);
    BIBSharedBuffer* const buffer =
        buffers->NewBuffer(length * sizeof(unsigned short), NULL, NULL, NULL, NULL);
    unsigned short* const units = buffers->GetBuffer(buffer);
    for (unsigned long i = 0; i < length; ++i) {
        units[i] = (unsigned char)path[i];
    }
    return buffer;
}

// Reads the file and says what its settings do not obey.
static int Validate(char const* file) {
    static char const kSchema[] =
        "< PDFSettings < EmbedAllFonts boolean optional < CompatibilityLevel number > > >";
    Settings const settings = FindSettings();
    Containers const containers = FindContainers();
    Arrays const arrays = FindArrays();
    Buffers const buffers = FindBuffers();

    BIBSharedBuffer* const path = MakePath(&buffers, file);
    PDFSettings* const opened = settings.NewFromFile(path, kSchema);
    buffers.Release(path);
    if (opened == NULL) {
        return 1;
    }
    // What a procedure gives is unowned: whoever keeps it adds a reference.
    containers.AddRef((BIBContainer*)opened);
    POSArray* const findings = settings.IsPDFSettingsValid(opened);
    if (findings != NULL) {
        containers.AddRef((BIBContainer*)findings);
        printf("%lu findings\n", (unsigned long)arrays.Count(findings));
        containers.Release((BIBContainer*)findings);
    }
    containers.Release((BIBContainer*)opened);
    return 0;
}

int main(int argc, char** argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: host_in_c COMPONENT FILE\n");
        return 2;
    }
    void* const component = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (component == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    long (*const version)(void) = (long (*)(void))dlsym(component, "PDFSettingsGetVersion");
    int (*const initialize)(BIBLookupProc) =
        (int (*)(BIBLookupProc))dlsym(component, "PDFSettingsInitialize");
    void (*const terminate)(void) = (void (*)(void))dlsym(component, "PDFSettingsTerminate");

    printf("version %lx\n", (unsigned long)version());
    int status = 1;
    if (initialize(&Lookup) != 0) {
        status = Validate(argv[2]);
    }
    terminate();
    dlclose(component);
    return status;
}
