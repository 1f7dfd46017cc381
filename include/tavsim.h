/* Copyright (c) 2026 the libtav authors. Licensed under the zlib licence; see LICENSE.
 * SPDX-License-Identifier: Zlib */

/**
 * \file tavsim.h
 *
 * The simulated device in the process of a test.
 *
 * A test that is written in C or C++ starts a device from a profile, calls its application's
 * functions, lets virtual time pass, and looks at what they did to the device:
 *
 *     TAVSim_Start("{\"machine\": \"cinnabar\"}", NULL);
 *     TAV_Vibrate(100, 1000);
 *     TAVSim_Advance(999);
 *     assert(strcmp(TAVSim_State("vibrator"), "on, period 100 ms") == 0);
 *     TAVSim_Advance(1);
 *     assert(strcmp(TAVSim_State("vibrator"), "off") == 0);
 *     TAV_Quit();
 *     TAVSim_Stop();
 *
 * **Linking.** The device must be found before what the library is linked with, SDL and the C
 * library. That is the order of `pkg-config --libs tavsim`, and with CMake of the target
 * `tav::simulator` in front of `tav::tav`:
 *
 *     cc -o alarm_test alarm_test.c alarm.c $(pkg-config --cflags --libs tavsim)
 *
 * A test that is linked otherwise works under `tavsim run`, which then says that the device of that
 * run was not used: the test has its own.
 *
 * **One device.** There is one device for the process. A test starts a fresh one with
 * TAVSim_Start(); what the test before it left on the device is gone. The library libtav has no
 * such start: end what the application has with it before, by TAV_Quit(). As long as no device is
 * started, the first request of the library starts one from the environment, as without this
 * interface.
 *
 * **Failures.** A function that fails returns -1 unless it says otherwise, or a null pointer where
 * it returns a text, and TAVSim_GetError() tells why. The messages in quotes below are exact; words
 * in capitals stand for what is inserted. All functions but TAVSim_Start(), TAVSim_Stop() and
 * TAVSim_GetError() fail with "no device runs; TAVSim_Start() starts one" where that is so. All but
 * TAVSim_GetError() fail with "there is not enough memory" when memory is exhausted; part of the
 * time of a TAVSim_Advance() may have passed then. Nothing is thrown. SDL's error string is not
 * used for it.
 *
 * **Threads.** The device lives on the thread that calls TAVSim_Start(), which is the one on which
 * the application handles SDL's events. Call everything in this header there. While a device runs,
 * all functions but TAVSim_GetError() fail on other threads with "the device belongs to the thread
 * that started it".
 *
 * **Ownership.** Texts that you pass in are yours and are copied where they are needed later. Texts
 * that come back belong to the device, and each function says how long they are valid.
 */
#ifndef TAVSIM_H
#define TAVSIM_H

#ifndef TAVSIM_API
#if defined(__GNUC__) && __GNUC__ >= 4
/** Marks what the library exports. */
#define TAVSIM_API __attribute__((visibility("default")))
#else
/** Marks what the library exports. */
#define TAVSIM_API
#endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * \defgroup simulated The simulated device in tests
 *
 * Starting, steering and looking at a simulated device in the process of a test (tavsim.h).
 * @{
 */

/**
 * How a device is to run. Fill it with zeros first, since later versions may have further members.
 */
typedef struct TAVSim_Options {
    /** 0: in virtual time, which passes when the test says so (TAVSim_Advance()) or the application
     *  waits (SDL_Delay(), SDL_WaitEvent()), at no cost. Else in the machine's time. */
    int realTime;
    /** 0: nobody else can reach the device. Else it listens for `tavsim ctl`, which is served while
     *  the application handles events and in TAVSim_Advance(). */
    int control;
    /** The folder of the device's files, which is made and stays; null or empty for a fresh one,
     *  which is removed when the device stops. What is in it already is used as it is. It must be
     *  the user's own. */
    const char* root;
    /** The script of the page whose plug-in the application is; null or empty: no page. An HTML file
     *  (.html, .htm) is a page in the browser: it needs realTime, and a server for it that listens on
     *  the socket `page` in the root folder before the application registers its methods, such as
     *  `tav-page --socket ROOT/page PAGE`. */
    const char* page;
    /** A file to which the journal is appended, a line at a time; null or empty: none. */
    const char* journal;
} TAVSim_Options;

/**
 * What TAVSim_FailNth() and TAVSim_FailFrom() can let fail.
 */
enum TAVSim_Fault {
    /** Memory for a text of the helper library or an entry of one of its lists. */
    TAVSIM_ALLOCATION = 0,
    /** A request on the message bus. */
    TAVSIM_DISPATCH = 1,
    /** A request to the host or to the hooks of the device's SDL. */
    TAVSIM_HOST = 2,
    /** Reading a message of the page or the unique-id file. */
    TAVSIM_READ = 3
};

/**
 * Gets the message of the last failure of a function of this header.
 *
 * \return one line without a line feed; the empty string when nothing has failed so far. A later
 *         success does not clear it. Valid until the next failure. Never null.
 */
TAVSIM_API const char* TAVSim_GetError(void);

/**
 * Starts a device, in place of the one that runs.
 *
 * Its clock begins at 0, nothing is queued on it and its journal is empty. What TAVSim_FailNth()
 * and TAVSim_FailFrom() have set is forgotten.
 *
 * \param profile what the device is made of: the text of a profile, which begins with a `{`; or
 *        else the name of a device that `tavsim devices` lists, or the path of a profile's file,
 *        which has a `/` in it or ends in `.json`. Not null.
 * \param options how it is to run; null stands for zeros.
 *
 * \return 0, or -1 on failure, after which no device runs:
 *         - "the profile is null".
 *         - what `tavsim run` says of a profile that cannot be read. A text is called "profile", as
 *           in "profile: machine: must be a string".
 *         - "PAGE: no such file", or "PAGE: is no regular file".
 *         - "PAGE: a page in a browser is in real time, not in virtual time".
 *         - "JOURNAL: the journal cannot be written: REASON".
 *         - what `tavsim run` says of a root folder that cannot be used.
 *         - "this program finds FUNCTION and others before the simulated device, which therefore
 *           refuses to work. …": see Linking.
 *
 * \sa TAVSim_Stop
 */
TAVSIM_API int TAVSim_Start(const char* profile, const TAVSim_Options* options);

/**
 * Stops the device: its page ends, its journal's file is closed, a fresh root folder is removed.
 *
 * Where none runs, it does nothing. A device that still runs when the process ends stops then.
 *
 * \return 0, or -1 on failure.
 *
 * \sa TAVSim_Start
 */
TAVSIM_API int TAVSim_Stop(void);

/**
 * Lets virtual time pass.
 *
 * Replies, readings, calls of the page and SDL's timers that fall due come in the order of their
 * times, as they would while the application polls its events. So the application's functions are
 * called from in here, and SDL events that are pushed stand in SDL's queue afterwards. The device's
 * clock, which SDL_GetTicks() tells, has moved on by so much at the end, or by more when one of the
 * application's functions waits.
 *
 * \param milliseconds how much, 0 or more. With 0 what is due now is delivered.
 *
 * \return 0, or -1 on failure:
 *         - "time cannot go back".
 *         - "the device is not in virtual time".
 */
TAVSIM_API int TAVSim_Advance(int milliseconds);

/**
 * Carries out a command, as `tavsim ctl` does for a device that runs elsewhere.
 *
 * The commands are those that `tavsim ctl --help` lists, but `list` and `wait`. What a command
 * queues, such as a reply, is delivered by the next TAVSim_Advance() or when the application
 * handles its events, and one that takes a while, such as a drag, goes on as time passes. Relative
 * files are below the test's folder. Of an application that draws with OpenGL, "screenshot" and
 * "picture" see the last frame since they were first given: give them again after the next
 * SDL_GL_SwapBuffers().
 *
 * \param line the command with its arguments, such as "location error 5". Not null.
 *
 * \return what the command prints, each line with its line feed; the empty string for most. Valid
 *         until the next call of this function. Null on failure, after which nothing has changed:
 *         - "the command is null".
 *         - what `tavsim ctl` says of a command that is unknown, malformed or refused.
 */
TAVSIM_API const char* TAVSim_Command(const char* line);

/**
 * Tells what the application has made of a part of the device.
 *
 * \param name the part, as the journal's entries of the kind "device" name it: "vibrator",
 *        "keyboard", "orientation", … Not null.
 *
 * \return its state, such as "shown"; valid until it changes or the device is started or stopped.
 *         Null on failure:
 *         - "the name is null".
 *         - "no state NAME", and the name that was probably meant.
 *         - "the application has done nothing to NAME".
 */
TAVSIM_API const char* TAVSim_State(const char* name);

/**
 * Tells how many lines the journal has had since the device was started.
 *
 * \return the number, 0 or more, or -1 on failure.
 *
 * \sa TAVSim_JournalLine
 */
TAVSIM_API int TAVSim_JournalLength(void);

/**
 * Gets a line of the journal.
 *
 * \param index which, from 0 to TAVSim_JournalLength() - 1. The device keeps the last 10000 lines,
 *        or fewer where these come to more than 64 MiB.
 *
 * \return the line, one JSON object without a line feed; valid until something happens on the
 *         device that is written into the journal, or it is started or stopped. Null on failure:
 *         - "the journal has no line INDEX", or no longer has it.
 *
 * \sa TAVSim_FindEntry
 */
TAVSIM_API const char* TAVSim_JournalLine(int index);

/**
 * Looks for an entry of the journal.
 *
 * \param pattern members that the entry must have, each with a glob that its value matches, with
 *        blanks between them: "kind=bus what=call* uri=vire://com.vire.vibrate/…". In a glob `*`
 *        stands for any characters and `?` for one; one with blanks stands in double quotes, with
 *        JSON's escapes. Instead of a member it can be a path to a value in its JSON, such as
 *        "payload.items[0].price=5"; instead of `=` and a glob it can be `<`, `>`, `<=` or `>=` and
 *        a number; and "near 52.5,13.4 25m" is a fix that is not farther from there. At most 32
 *        such conditions. Not null.
 * \param from the first line to look at, 0 or more.
 *
 * \return the index of the first such entry, as of TAVSim_JournalLine(); -1 when there is none,
 *         which is no failure; -2 on failure:
 *         - "the pattern is null".
 *         - what is wrong with a pattern that is malformed, or that no entry can ever match, such
 *           as "no member "urii"; did you mean "uri"?".
 */
TAVSIM_API int TAVSim_FindEntry(const char* pattern, int from);

/**
 * Lets the n-th thing of a kind fail, and no other of that kind.
 *
 * \param fault the kind, one of enum TAVSim_Fault.
 * \param n which, counted from now, 1 for the next; 0 lets none fail.
 *
 * \return 0, or -1 on failure:
 *         - "there is no such fault".
 *         - "things are counted from 1".
 *
 * \sa TAVSim_FailFrom, TAVSim_Occurrences
 */
TAVSIM_API int TAVSim_FailNth(int fault, int n);

/**
 * Lets the n-th thing of a kind fail, and all of that kind after it.
 *
 * \param fault the kind, one of enum TAVSim_Fault.
 * \param n the first, counted from now, 1 for the next; 0 lets none fail.
 *
 * \return 0, or -1 on failure, as of TAVSim_FailNth().
 *
 * \sa TAVSim_FailNth
 */
TAVSIM_API int TAVSim_FailFrom(int fault, int n);

/**
 * Tells how many things of a kind there have been, failed or not, since TAVSim_FailNth() or
 * TAVSim_FailFrom() was called for it, or the device was started.
 *
 * A test that lets each thing fail in turn knows by it when it is through: as soon as there are
 * fewer than n.
 *
 * \param fault the kind, one of enum TAVSim_Fault.
 *
 * \return the number, 0 or more, or -1 on failure:
 *         - "there is no such fault".
 */
TAVSIM_API int TAVSim_Occurrences(int fault);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
