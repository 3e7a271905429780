/* Drives RD210 as a host that knows nothing but the exports, the slot numbers and the layout of the records:
   no header of the library, no import of it. Arguments: the library, the stand-in for hidapi with its
   simulated devices. */

#include <ctype.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#ifdef _WIN32
#include <windows.h>
typedef HANDLE Signal;
#define MAKE_SIGNAL(signal) ((signal = CreateSemaphoreA(NULL, 0, 9, NULL)) ? 0 : -1)
#define GIVE_SIGNAL(signal) ReleaseSemaphore(signal, 1, NULL)
#define AWAIT_SIGNAL(signal) ((int)WaitForSingleObject(signal, 10000))
typedef HMODULE Library;
#define OPEN_LIBRARY(file) LoadLibraryA(file)
#define FIND(library, name) ((void*)(intptr_t)GetProcAddress(library, name))
#else
#include <dlfcn.h>
#include <semaphore.h>
#include <time.h>
typedef sem_t Signal;
#define MAKE_SIGNAL(signal) sem_init(&signal, 0, 0)
#define GIVE_SIGNAL(signal) sem_post(&signal)
#define AWAIT_SIGNAL(signal) awaitSignal(&signal)
typedef void* Library;
#define OPEN_LIBRARY(file) dlopen(file, RTLD_NOW | RTLD_LOCAL)
#define FIND(library, name) dlsym(library, name)
#endif

#if defined(_WIN32) && defined(__i386__)
#define MEMBER __attribute__((thiscall))
#else
#define MEMBER
#endif

static int failures;

#define EXPECT(condition)                                                                                    \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            printf("line %d: %s\n", __LINE__, #condition);                                                   \
            ++failures;                                                                                      \
        }                                                                                                    \
    } while (0)

/* The N-th entry of an object's first virtual table, as a function with these arguments after the object. */
#define SLOT(object, number, ...) ((int32_t(MEMBER*)(void*, ##__VA_ARGS__))(*(void***)(object))[number])

static volatile int events;
static uint32_t lastEvent;
static uint16_t lastValue;

static void onEvent(void* record)
{
    memcpy(&lastEvent, record, 4);
    memcpy(&lastValue, (char*)record + 4, 2);
    ++events;
}

/* What the callback for devices that come and go is given, by value. */
struct Plugged {
    uint8_t bytes[1074];
};

/* Each event has a place of its own: its thread writes it before the signal, the test reads it after. */
static Signal plugs;
static struct Plugged plugEvents[8];
static unsigned plugsTold, plugsTaken;

static void onPlug(struct Plugged plugged)
{
    plugEvents[plugsTold++ % 8] = plugged;
    GIVE_SIGNAL(plugs);
}

#ifndef _WIN32
static int awaitSignal(Signal* signal)
{
    struct timespec end;
    clock_gettime(CLOCK_REALTIME, &end);
    end.tv_sec += 10;
    return sem_timedwait(signal, &end);
}
#endif

/* Writes a text and the zeros after it, each letter changed by `form`; gives the place after the field. */
static uint8_t* putText(uint8_t* at, size_t size, const char* text, int (*form)(int))
{
    size_t i;
    memset(at, 0, size);
    for (i = 0; text[i]; ++i)
        at[i] = (uint8_t)form((unsigned char)text[i]);
    return at + size;
}

static int asItIs(int letter)
{
    return letter;
}

/* The whole record of an attached RD210, and not a byte more. */
static void record(int32_t (*devInfo)(void*), const char* path)
{
    static const uint8_t end[] = {0x03, 0x01, 0x2F, 0x01, 0x7E, 0x3A, 1, 0, 0, 0, 1, 0, 0, 0, 0xEE};
    static uint8_t expected[2574 + 1];
    static uint8_t found[sizeof expected];
    uint8_t* at = putText(expected, 1024, path, tolower);
    at = putText(at, 512, "RD210-000001", asItIs);
    at = putText(at, 512, "RD210", asItIs);
    at = putText(at, 512, "Tessel Works", asItIs);
    memcpy(at, end, sizeof end);
    memset(found, 0xEE, sizeof found);
    EXPECT(devInfo(found) == 1);
    EXPECT(memcmp(found, expected, sizeof expected) == 0);
}

/* The next event, which must be of an RD210 that has come or gone. */
static void plug210(const char* path, uint8_t plugged)
{
    const uint8_t end[] = {0x7E, 0x3A, 0, 0, 0x2F, 0x01, 0, 0, plugged, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
    uint8_t expected[1074];
    uint8_t* at = putText(expected, 30, "RD210", asItIs);
    at = putText(at, 1024, path, toupper);
    memcpy(at, end, sizeof end);
    EXPECT(AWAIT_SIGNAL(plugs) == 0);
    EXPECT(memcmp(plugEvents[plugsTaken++ % 8].bytes, expected, sizeof expected) == 0);
}

static void put16(uint8_t* at, unsigned value)
{
    at[0] = (uint8_t)value;
    at[1] = (uint8_t)(value >> 8);
}

static unsigned get16(const uint8_t* at)
{
    return at[0] | (unsigned)at[1] << 8;
}

static void* find(Library library, const char* name)
{
    void* found = FIND(library, name);
    if (!found)
        printf("no export %s\n", name);
    return found;
}

static void profiles(void* mouse)
{
    uint8_t profile = 0xEE;
    EXPECT(SLOT(mouse, 0, int)(mouse, 3) == 0);
    EXPECT(SLOT(mouse, 1, uint8_t*)(mouse, &profile) == 0);
    EXPECT(profile == 3);
    EXPECT(SLOT(mouse, 0, int)(mouse, 5) == -2);
    EXPECT(SLOT(mouse, 1, uint8_t*)(mouse, NULL) == -3);
    EXPECT(SLOT(mouse, 0, int)(mouse, 0) == 0);
    EXPECT(SLOT(mouse, 23)(mouse) == 0); /* saveConfig */
}

static void keys(void* mouse)
{
    uint8_t map[26];
    EXPECT(SLOT(mouse, 4, int, int)(mouse, 2, 0x0009) == 0);
    EXPECT(SLOT(mouse, 4, int, int)(mouse, 3, 0x0500) == 0);
    EXPECT(SLOT(mouse, 4, int, int)(mouse, 13, 0x0009) == -2);
    EXPECT(SLOT(mouse, 6, uint8_t*)(mouse, map) == 0);
    EXPECT(get16(map + 4) == 0x0009);
    EXPECT(get16(map + 6) == 0x0500);
    put16(map + 8, 0x0123);
    EXPECT(SLOT(mouse, 5, const uint8_t*)(mouse, map) == 0);
    memset(map, 0xEE, sizeof map);
    EXPECT(SLOT(mouse, 6, uint8_t*)(mouse, map) == 0);
    EXPECT(get16(map + 8) == 0x0123);
}

static void combo(void* mouse)
{
    uint8_t on = 0xEE;
    EXPECT(SLOT(mouse, 7, int)(mouse, 1) == 0);
    EXPECT(SLOT(mouse, 8, uint8_t*)(mouse, &on) == 0);
    EXPECT(on == 1);
    EXPECT(SLOT(mouse, 7, int)(mouse, 0) == 0);
    EXPECT(SLOT(mouse, 8, uint8_t*)(mouse, &on) == 0);
    EXPECT(on == 0);
}

/* 43 bytes of head and 199 events of 5 bytes. */
enum { macroSize = 43 + 199 * 5 };

static void macros(void* mouse)
{
    static uint8_t written[macroSize];
    static uint8_t read[macroSize + 1];
    written[0] = 4;
    strcpy((char*)written + 1, "name");
    written[41] = 1;
    written[42] = 20;
    for (int i = 0; i < 20; ++i) {
        put16(written + 43 + 5 * i, 0x0104u + (unsigned)i);
        written[45 + 5 * i] = (uint8_t)(i % 2);
        put16(written + 46 + 5 * i, 100u * (unsigned)i);
    }
    EXPECT(SLOT(mouse, 11, uint8_t*)(mouse, written) == 0);
    EXPECT(written[42] == 20);
    memset(read, 0xEE, sizeof read);
    read[0] = 4;
    EXPECT(SLOT(mouse, 12, uint8_t*)(mouse, read) == 0);
    EXPECT(memcmp(read, written, 43 + 20 * 5) == 0);
    EXPECT(read[macroSize] == 0xEE);
    EXPECT(SLOT(mouse, 13, int)(mouse, 4) == 0); /* clearMacro */
    EXPECT(SLOT(mouse, 12, uint8_t*)(mouse, read) == 0);
    EXPECT(read[41] == 3 && read[42] == 0);
    read[0] = 13;
    EXPECT(SLOT(mouse, 12, uint8_t*)(mouse, read) == -3);
}

static void performance(void* mouse)
{
    uint8_t written[48] = {0};
    uint8_t read[48];
    written[0] = 2;
    for (int level = 0; level < 7; ++level) {
        put16(written + 1 + 4 * level, 400u * (unsigned)(level + 1));
        put16(written + 3 + 4 * level, 500u * (unsigned)(level + 1));
        written[29 + level] = (uint8_t)(level != 3);
    }
    written[36] = 2;    /* pollingCode */
    written[40] = 1;    /* flagA */
    written[41] = 1;    /* flagB */
    written[42] = 0x21; /* surfaceA */
    written[43] = 0x22; /* surfaceB */
    written[44] = 1;    /* settingF0 */
    written[45] = 7;    /* pointerSpeed */
    written[46] = 5;    /* doubleClickSpeed */
    written[47] = 8;    /* settingBank */
    EXPECT(SLOT(mouse, 14, const uint8_t*)(mouse, written) == 0);
    memset(read, 0xEE, sizeof read);
    EXPECT(SLOT(mouse, 15, uint8_t*)(mouse, read) == 0);
    memset(read + 37, 0, 3); /* reserved */
    EXPECT(memcmp(read, written, sizeof read) == 0);
    EXPECT(SLOT(mouse, 16, int)(mouse, 6) == 0); /* changeDpiLevel */
    EXPECT(SLOT(mouse, 16, int)(mouse, 3) == -2);
    EXPECT(SLOT(mouse, 16, int)(mouse, 7) == -2);
    EXPECT(SLOT(mouse, 15, uint8_t*)(mouse, read) == 0);
    EXPECT(read[0] == 6);
    EXPECT(SLOT(mouse, 3, int)(mouse, 2) == 0); /* resetPartial */
    EXPECT(SLOT(mouse, 15, uint8_t*)(mouse, read) == 0);
    EXPECT(read[45] == 6 && read[46] == 6);
}

static void surface(void* mouse)
{
    uint8_t status = 0xEE, a = 0xEE, b = 0xEE;
    EXPECT(SLOT(mouse, 17)(mouse) == 0);
    EXPECT(SLOT(mouse, 19, uint8_t*)(mouse, &status) == 0);
    EXPECT(status == 1);
    EXPECT(SLOT(mouse, 18)(mouse) == 0);
    EXPECT(SLOT(mouse, 19, uint8_t*)(mouse, &status) == 0);
    EXPECT(status == 0);
    EXPECT(SLOT(mouse, 20, uint8_t*, uint8_t*)(mouse, &a, &b) == 0);
    EXPECT(a != 0xEE && b != 0xEE);
}

typedef int Happen(const char*, const char*, const int*, int);
typedef void OnPlug(struct Plugged);

static void notices(void* mouse, Happen* happen, const char* path)
{
    const int level = 4;
    EXPECT(SLOT(mouse, 21, void (*)(void*))(mouse, onEvent) == 0);
    EXPECT(happen(path, "dpi", &level, 1) == 0);
    EXPECT(SLOT(mouse, 10)(mouse) == 0); /* its reply comes after the event */
    EXPECT(events == 1 && lastEvent == 1 && lastValue == 0);
    const int key[2] = {3, 1};
    EXPECT(happen(path, "key", key, 2) == 0);
    EXPECT(SLOT(mouse, 10)(mouse) == 0);
    EXPECT(events == 2 && lastEvent == 2 && lastValue == 0x22);
    EXPECT(SLOT(mouse, 22)(mouse) == 0);
    EXPECT(happen(path, "key", key, 2) == 0);
    EXPECT(SLOT(mouse, 10)(mouse) == 0);
    EXPECT(events == 2);
}

static void operations(void* mouse)
{
    profiles(mouse);
    keys(mouse);
    combo(mouse);
    EXPECT(SLOT(mouse, 9)(mouse) == 0);  /* startRecordMacro */
    EXPECT(SLOT(mouse, 10)(mouse) == 0); /* stopRecordMacro */
    macros(mouse);
    performance(mouse);
    surface(mouse);
    EXPECT(SLOT(mouse, 2, int)(mouse, 1) == 0); /* resetProfile */
}

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    const Library standIn = OPEN_LIBRARY(argv[2]);
    const Library library = standIn ? OPEN_LIBRARY(argv[1]) : NULL;
    if (!library) {
        printf("cannot load %s or %s\n", argv[1], argv[2]);
        return 2;
    }
    int (*plug)(const char*, char*) = (int (*)(const char*, char*))find(standIn, "pyrux_sim_plug");
    int (*unplug)(const char*) = (int (*)(const char*))find(standIn, "pyrux_sim_unplug");
    Happen* happen = (Happen*)find(standIn, "pyrux_sim_event");
    float* (*version)(float*) = (float* (*)(float*))find(library, "pyrux_version");
    int32_t (*init)(void) = (int32_t(*)(void))find(library, "pyrux_init");
    int32_t (*finish)(void) = (int32_t(*)(void))find(library, "pyrux_exit");
    uint32_t (*background)(uint8_t) = (uint32_t(*)(uint8_t))find(library, "pyrux_background");
    int32_t (*devNums)(void) = (int32_t(*)(void))find(library, "devNums");
    int32_t (*devInfo)(void*) = (int32_t(*)(void*))find(library, "devInfo");
    int32_t (*registerDevNotify)(OnPlug*) = (int32_t(*)(OnPlug*))find(library, "registerDevNotify");
    void* (*rd210)(const char*) = (void* (*)(const char*))find(library, "rd210");
    void (*print)(const char*, ...) = (void (*)(const char*, ...))find(library, "dprintf");
    if (!plug || !unplug || !happen || !version || !init || !finish || !background || !devNums || !devInfo ||
        !registerDevNotify || !rd210 || !print)
        return 2;

    float number = 0;
    EXPECT(version(&number) == &number && number == 3.86f);
    EXPECT(background(1) == 1);
    EXPECT(init() == 0);
    print("a host of %d parts", 2);

    static char path[1024];
    EXPECT(MAKE_SIGNAL(plugs) == 0);
    EXPECT(registerDevNotify(onPlug) == 0);
    EXPECT(devNums() == 0);
    EXPECT(plug("rd210", path) == 0);
    plug210(path, 1);
    EXPECT(devNums() == 1);
    record(devInfo, path);

    EXPECT(rd210("") == NULL);
    void* mouse = rd210(path);
    if (!mouse) {
        printf("no object for %s\n", path);
        return 2;
    }
    EXPECT(rd210(path) == mouse);
    operations(mouse);
    notices(mouse, happen, path);

    EXPECT(unplug(path) == 0);
    plug210(path, 0);
    EXPECT(SLOT(mouse, 24, int)(mouse, 1) == 0); /* exit_device */
    EXPECT(SLOT(mouse, 24, int)(mouse, 1) == 0);
    EXPECT(SLOT(mouse, 16, int)(mouse, 1) == -11);
    EXPECT(finish() == 0);
    printf(failures ? "%d failures\n" : "all well\n", failures);
    return failures != 0;
}
