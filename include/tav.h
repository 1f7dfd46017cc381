/* Copyright (c) 2026 the libtav authors. Licensed under the zlib licence; see LICENSE.
 * SPDX-License-Identifier: Zlib */

/**
 * \file tav.h
 *
 * libtav: the device's platform services for native SDL 1.2 applications.
 *
 * This header is the whole public interface and its reference manual. Rules for all functions are
 * here; the comment of a declaration describes only that declaration.
 *
 * **Error codes.** Most functions return an `int`: TAV_NOERROR (0) for success, else one of the
 * other codes of enum TAV_Error. A function that returns a pointer returns null on failure. Nothing
 * is thrown, and nothing aborts the application. Exhausted memory is a failure too: the functions
 * that allocate memory say in their comments how it is reported.
 *
 * **Failure reports.** A failing function does three things, in this order: it sets the SDL error
 * string to its message, writes the same text as a trace line with the tag "tav_e", and returns the
 * code (or null). TAV_GetError() and SDL_GetError() read the message. Keep in mind that
 *
 * - success never clears the message, so look at it only after a failure;
 * - a few failures set no message, and the one before them stays: TAV_EnableCompass() when the host
 *   refuses, TAV_GetAppinfoValue() and TAV_GetDataFilePath() when the host's look-up fails, and
 *   TAV_GetRegionCountryCode(), TAV_GetRegionCountryName() and TAV_GetLanguage() when the host
 *   cannot read the value. Call SDL_ClearError() first where you show messages of these;
 * - SDL 1.2 keeps at most 127 bytes of each string that is inserted into a message. The trace line
 *   has all of it.
 *
 * The messages in quotes below are exact; printf-style conversions stand for inserted values.
 *
 * **Caller buffers.** A function that fills a buffer takes the buffer and its length in bytes, the
 * terminator counted. It tests first for a null buffer, then for a length of 0 or less, then its
 * other arguments. It never writes beyond the given length and always terminates what it writes.
 * Text that does not fit is a failure, not cut, unless the function says otherwise. After a failure
 * the buffer's content means nothing, unless the function says otherwise.
 *
 * **Threads.** Call every function from one thread, the one on which the application polls SDL
 * events. The library starts no thread and takes no lock.
 *
 * **Ownership.** Buffers and records that you pass in are yours; the library keeps no pointer to
 * them, except the user data of a service call. Strings that you pass in are copied where they are
 * needed later. Records and texts that the library hands to your functions are valid during that
 * one call: copy what you keep. The purchase records (\ref TAV_ItemCollection and its sisters) are
 * yours until you release them. Static texts, such as that of TAV_GetHardware(), are never freed.
 *
 * **What must come first.** Call TAV_Init() at the start of the application. Only TAV_GetCompass()
 * refuses to work without it; it also needs TAV_EnableCompass(). TAV_GetLocation() needs
 * TAV_EnableLocationTracking(), and TAV_CallJS() needs TAV_JSRegistrationComplete(). Everything
 * else works at once.
 *
 * **Asynchronous results.** Service replies, JavaScript calls, compass readings and locations
 * arrive on the application's thread while it is inside SDL_PollEvent(), SDL_WaitEvent() or
 * SDL_PumpEvents(). An application that does not handle SDL events receives nothing. Replies and
 * JavaScript calls come as direct calls of your functions from within those three, never as events.
 * Readings and locations are stored and announced by an SDL user event (\ref TAV_EVENT_COMPASS,
 * \ref TAV_EVENT_LOCATION, \ref TAV_EVENT_LOCATION_FAILURE); such an event is lost when SDL's queue
 * is full or not running (it needs SDL_INIT_VIDEO), the stored value is not. The purchase requests
 * handle SDL events themselves while they wait, so your functions can run inside them too.
 *
 * **Booleans.** An SDL_bool argument is true for any non-zero value. Test an SDL_bool result
 * against 0, not against SDL_TRUE.
 *
 * **JSON.** Texts that you pass in go into the JSON payloads of requests unchanged: no escaping is
 * applied anywhere. A quote, backslash or line feed in one breaks the payload or changes its
 * meaning. Escape them first, above all in text that a user typed or another program sent.
 *
 * **Tracing.** Every function traces its entry with the tag "tav_f", its name and its arguments
 * (those of the compass leave theirs out). The purchase functions trace their failures only, and
 * TAV_LaunchBrowser() tests its argument before it traces. Further tags: "tav_e" a failure, "tav_1"
 * a condition that is handled without failing, "tav_2" progress of TAV_Init(), "tav_9" the reply to
 * a purchase request. A few failures are traced under the name of the internal step that met them.
 * The platform decides where traces go, and which tags are kept.
 */
#ifndef TAV_H
#define TAV_H

#include "SDL.h"

#ifndef TAV_API
#if defined(__GNUC__) && __GNUC__ >= 4
/** Marks what the library exports. */
#define TAV_API __attribute__((visibility("default")))
#else
/** Marks what the library exports. */
#define TAV_API
#endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * \defgroup frame Errors and library queries
 *
 * Error codes, the message of the last failure, and how the application runs.
 * @{
 */

/**
 * The error codes. The numbers are fixed; 1 and 7 are not used.
 *
 * Functions return them as `int`.
 */
enum TAV_Error {
    /** Success. */
    TAV_NOERROR = 0,
    /** A request could not be handed to the platform: to the message bus, the host library, the
     *  device's SDL or the JavaScript host. */
    TAV_ECONNECTION = 2,
    /** An argument is null, blank, negative or out of range, or a buffer has no usable length. */
    TAV_INVALIDINPUT = 3,
    /** Any other failure: unknown hardware, a request that is not allowed for a plug-in, an answer
     *  of the platform that could not be used. */
    TAV_EOTHER = 4,
    /** A call that must come first was not made, or a sensor is off. */
    TAV_UNINIT = 5,
    /** The location service reported that it failed. */
    TAV_ELOCATIONSERVICE = 6,
    /** The caller's buffer cannot hold the result. */
    TAV_STRINGTOOSMALL = 8,
    /** A file or the system preferences database could not be opened or read. */
    TAV_EDATAACCESS = 9,
    /** Information about a network interface could not be had. */
    TAV_ENETWORK = 10,
    /** The host library has no such value. */
    TAV_EHOSTLOOKUP = 11
};

/**
 * Gets the message of the last failure.
 *
 * This is the SDL error string, which SDL's own functions set too. A later success does not clear
 * it.
 *
 * \return the message; the empty string when nothing has failed so far. It belongs to SDL and is
 *         valid until the next call of TAV_GetError() or SDL_GetError(). Never null.
 */
TAV_API const char *TAV_GetError(void);

/**
 * Tells whether the application runs as a plug-in component inside a web application.
 *
 * A plug-in has the JavaScript bridge, but no compass (TAV_EnableCompass()), no keyboard
 * (TAV_SetKeyboardState()), no TAV_Minimize() and no TAV_SetTouchAggression().
 *
 * \return the answer of the device's SDL, unchanged: 0 for a standalone application, any other
 *         value for a plug-in. It cannot fail.
 */
TAV_API SDL_bool TAV_IsPlugin(void);

/**
 * Gets the version of the development kit whose interface the library offers.
 *
 * \return 300.
 */
TAV_API int TAV_GetKOBVersion(void);

/** @} */

/**
 * \defgroup start Start and stop
 * @{
 */

/**
 * Starts the library. Call it once, before the other functions.
 *
 * It does three things:
 *
 * - When the application's real user is root, it makes sure that the message bus knows the
 *   security roles of the executable. The application's id is the value "id" of its information
 *   (see TAV_GetAppinfoValue()), or else the file name of the executable; an id with a '/' in it
 *   gets no roles. A missing role file "/var/vire/ks2/roles/pub/ID.json" or
 *   "/var/vire/ks2/roles/prv/ID.json" is written from the template
 *   "/usr/vire/ks2/templates/KOB.pub" or "KOB.prv", with the id and the executable's path filled
 *   in. After each attempt to write one, the command "/usr/bin/ks-control scan-services" runs, and
 *   the call waits for it. A role file that exists is never touched again, not even the empty one
 *   that a missing template leaves: remove it to have it written anew.
 * - It sets the stored compass reading to 0, -1.0, -1.0.
 * - It registers the function that receives compass readings with the host library.
 *
 * It may be called again, and then does all of this again.
 *
 * \param flags appears in the trace and has no other effect; pass 0.
 *
 * \return TAV_NOERROR, always. Roles that could not be registered are reported in the trace only.
 *
 * \sa TAV_Quit
 */
TAV_API int TAV_Init(int flags);

/**
 * Stops the library: forgets every reply function and every JavaScript handler.
 *
 * It cancels no service call; replies that still come are dropped. Use
 * TAV_UnregisterServiceCallback() where the service is to be told. Compass and location tracking
 * stay as they are; switch them off first where you do not want their events any more. A page's
 * calls of native methods are answered with the exception "Unknown Function" from now on.
 *
 * It may be called at any time, also without TAV_Init(), more than once, and from within a reply
 * function or a handler. The library can be used again afterwards, without another TAV_Init().
 *
 * \sa TAV_Init
 */
TAV_API void TAV_Quit(void);

/** @} */

/**
 * \defgroup services Service calls
 *
 * Requests to any service on the platform's message bus. None of them waits. A request goes out
 * with a URI, such as "vire://com.vire.location/startTracking", and a JSON payload; replies are
 * JSON texts.
 *
 * \code
 * static void on_status(TAV_ServiceParameters *parameters, void *userData)
 * {
 *     *(int *)userData = TAV_GetParamInt(parameters, "percent");
 * }
 *
 * static int percent = -1;
 *
 * TAV_ServiceCallWithCallback("vire://com.vire.battery/status", "{}", on_status, &percent,
 *                             SDL_TRUE);
 * \endcode
 * @{
 */

/**
 * One reply, as a reply function receives it.
 *
 * The record and its text are valid during that one call of the reply function.
 *
 * \sa TAV_GetParamJson
 */
typedef struct TAV_ServiceParameters {
    const char *reply; /**< The reply's text; owned by the bus, and may be null. */
    Uint32 reserved1;  /**< 0. */
    Uint32 reserved2;  /**< 0. */
} TAV_ServiceParameters;

/**
 * A function of the application that receives replies.
 *
 * It runs on the application's thread, while the application polls, waits for or pumps SDL events,
 * or waits inside a purchase request. A reply in which the service reports a failure arrives like
 * any other: look at its content.
 *
 * The function may use the whole library: start calls, register itself anew, unregister itself or
 * others, call TAV_Quit(). When it polls SDL events, it can be entered again by a further reply.
 *
 * \param parameters the reply; never null, valid during this call only.
 * \param userData the pointer that was given with the call, unchanged.
 */
typedef void (*TAV_ServiceCallback)(TAV_ServiceParameters *parameters, void *userData);

/**
 * Sends a request whose replies nobody receives.
 *
 * The same as TAV_ServiceCallWithCallback() without a reply function.
 *
 * \param uri the service and its method; handed to the bus as it is.
 * \param payload the request's JSON text; handed to the bus as it is.
 *
 * \return TAV_NOERROR when the request was dispatched; what the service makes of it is not known.
 *         Failures:
 *         - TAV_ECONNECTION, "Unable to dispatch service call": the bus refused the request.
 *
 * \sa TAV_ServiceCallWithCallback
 */
TAV_API int TAV_ServiceCall(const char *uri, const char *payload);

/**
 * Sends a request and has a function called with its replies.
 *
 * A one-shot call is over after its first reply. A subscription stays, and the function is called
 * for every reply, until TAV_UnregisterServiceCallback() or TAV_Quit(). There is no time-out: a
 * one-shot call that is never answered stays open until one of these two ends it, too.
 *
 * Some services expect a member such as "subscribe": true in the payload of a subscription. Write
 * it there yourself: the library adds nothing.
 *
 * \param uri the service and its method; handed to the bus as it is.
 * \param payload the request's JSON text; handed to the bus as it is.
 * \param callback the function that receives the replies, or null: then the request is sent
 *        one-way, and the two arguments after it mean nothing.
 * \param userData handed to the function with each reply. The library never dereferences it; what
 *        it points to must live as long as the call is open.
 * \param removeAfterResponse true for a one-shot call, SDL_FALSE for a subscription.
 *
 * \return TAV_NOERROR when the request was dispatched; the function is never called before this
 *         call returns. Failures:
 *         - TAV_ECONNECTION, "Unable to dispatch service call": the bus refused the request, or
 *           there is no memory for it. The function will not be called. A request that was sent
 *           before memory ran out is cancelled.
 *
 * \sa TAV_UnregisterServiceCallback
 */
TAV_API int TAV_ServiceCallWithCallback(const char *uri, const char *payload,
                                        TAV_ServiceCallback callback, void *userData,
                                        SDL_bool removeAfterResponse);

/**
 * Cancels every open call that was made with a reply function.
 *
 * Calls are told apart by the function alone: all of its open calls end, one-shot calls and
 * subscriptions, whatever their user data. Use different functions for calls that end at different
 * times. The function is not called any more for them.
 *
 * \param callback the function. Null, or a function without open calls, is no error and changes
 *        nothing.
 *
 * \return TAV_NOERROR, always.
 *
 * \sa TAV_ServiceCallWithCallback
 */
TAV_API int TAV_UnregisterServiceCallback(TAV_ServiceCallback callback);

/** @} */

/**
 * \defgroup replies Reply values
 *
 * Reading a reply inside a reply function. A key names a member of the reply's outermost object.
 *
 * None of these functions fails: they set no message, and answer with a neutral value (0, false,
 * null, the empty string) where there is nothing to read. TAV_ParamExists() tells an absent member
 * from such a value. Each call parses the whole text again; when many values of a large reply are
 * needed, take the text with TAV_GetParamJson() and parse it once yourself.
 * @{
 */

/**
 * Gets a reply's whole text.
 *
 * \param parameters the reply that was handed to the reply function, or null.
 *
 * \return the JSON text, as it came from the bus; null when \p parameters is null or the reply has
 *         no text. It is not a copy: it is valid during the reply function's call only.
 */
TAV_API const char *TAV_GetParamJson(const TAV_ServiceParameters *parameters);

/**
 * Reads a value of a reply as a boolean.
 *
 * \param parameters the reply that was handed to the reply function, or null.
 * \param key the member's name, or null.
 *
 * \return SDL_TRUE (1) when the value is true, else SDL_FALSE (0): for a value of false, a null
 *         argument, a reply without text or that is not JSON, an absent member, or a value of
 *         another type.
 *
 * \sa TAV_ParamExists
 */
TAV_API SDL_bool TAV_GetParamBool(const TAV_ServiceParameters *parameters, const char *key);

/**
 * Reads a value of a reply as a double.
 *
 * \param parameters the reply that was handed to the reply function, or null.
 * \param key the member's name, or null.
 *
 * \return the number; 0.0 for a null argument, a reply without text or that is not JSON, an absent
 *         member, or a value of another type.
 *
 * \sa TAV_ParamExists
 */
TAV_API double TAV_GetParamDouble(const TAV_ServiceParameters *parameters, const char *key);

/**
 * Reads a value of a reply as an integer.
 *
 * \param parameters the reply that was handed to the reply function, or null.
 * \param key the member's name, or null.
 *
 * \return the number, without its fraction; 0 for one that needs more than 32 bits, a null
 *         argument, a reply without text or that is not JSON, an absent member, or a value of
 *         another type.
 *
 * \sa TAV_ParamExists
 */
TAV_API int TAV_GetParamInt(const TAV_ServiceParameters *parameters, const char *key);

/**
 * Reads a value of a reply as text.
 *
 * The text of a string is its content; that of a number, boolean, object or array is its JSON text.
 * A value that does not fit is not cut: a text of n bytes needs a buffer of n + 1.
 *
 * The buffer is left as it was when \p parameters or \p buffer is null or \p bufferLength is 0 or
 * less. In every other case it holds the value or, where there is none or it does not fit, the
 * empty string. The trace then says which, with the tag "tav_1": "couldn't parse" or "string too
 * small".
 *
 * \param parameters the reply that was handed to the reply function, or null.
 * \param key the member's name; null names no member.
 * \param buffer receives the text.
 * \param bufferLength the buffer's length in bytes, the terminator counted.
 *
 * \sa TAV_ParamExists
 */
TAV_API void TAV_GetParamString(const TAV_ServiceParameters *parameters, const char *key,
                                char *buffer, int bufferLength);

/**
 * Tells whether a reply has a member.
 *
 * \param parameters the reply that was handed to the reply function, or null.
 * \param key the member's name, or null.
 *
 * \return SDL_TRUE (1) when the member is there, whatever its value, else SDL_FALSE (0): also for a
 *         null argument, and for a reply without text or that is not JSON.
 */
TAV_API SDL_bool TAV_ParamExists(const TAV_ServiceParameters *parameters, const char *key);

/** @} */

/**
 * \defgroup handlers JavaScript handlers
 *
 * When the application runs as a plug-in, the page's JavaScript can call its native methods.
 * Register a handler for each method, then call TAV_JSRegistrationComplete(). All values cross the
 * bridge as text.
 *
 * \code
 * static void on_greet(TAV_JSParameters *parameters)
 * {
 *     if (TAV_GetNumJSParams(parameters) < 1) {
 *         TAV_JSException(parameters, "greet needs a name");
 *     } else {
 *         TAV_JSReply(parameters, TAV_GetJSParamString(parameters, 0));
 *     }
 * }
 *
 * TAV_RegisterJSHandler("greet", on_greet);
 * TAV_JSRegistrationComplete();
 * \endcode
 * @{
 */

/**
 * One call of a native method: its parameters and its answer.
 *
 * Read it with TAV_GetNumJSParams() and its sisters and answer with TAV_JSReply() or
 * TAV_JSException(). You may read the fields yourself, but change none of them. The record is valid
 * during the handler's call only.
 *
 * The functions that read parameters look at nothing but \p count and \p parameters, so they also
 * work on a record of your own, as a test of a handler has it. An answer in such a record is yours:
 * begin with a null \p reply, and release the last one with C++'s `delete[]`. A copy of a record
 * shares its texts; do not answer through it.
 */
typedef struct TAV_JSParameters {
    int count;         /**< The number of parameters. Where the page announced more than it sent,
                        *   the number of those that arrived; one that is not positive is as it
                        *   was sent. */
    char **parameters; /**< The parameters, of which single ones may be null; null when \p count is
                        *   not positive. Owned by the library. */
    char *reply;       /**< The answer so far; owned by the library. Null when there is none, or
                        *   there was no memory for it. */
    int isException;   /**< Non-zero when the answer is an exception. */
} TAV_JSParameters;

/**
 * A function of the application that performs a native method.
 *
 * It runs on the application's thread, while the application polls, waits for or pumps SDL events,
 * or waits inside a purchase request. Its last TAV_JSReply() or TAV_JSException() is the answer; a
 * handler that calls neither answers with the empty text. The answer is sent when it returns. When
 * there is no memory for the call or its answer, nothing is sent, and the call fails in the page.
 *
 * It may use the whole library, also register handlers, replace itself, or call TAV_Quit().
 *
 * \param parameters the call; never null, valid during this call only.
 */
typedef void (*TAV_JSHandler)(TAV_JSParameters *parameters);

/**
 * Registers the handler of a native method.
 *
 * Methods may be registered before and after TAV_JSRegistrationComplete(). Registering a name again
 * replaces its handler and keeps the method's place in the list that the page gets. TAV_Quit()
 * forgets all methods; a single one cannot be removed, but a null handler disables it.
 *
 * \param methodName the name, under which JavaScript calls the method; upper and lower case differ.
 *        It is copied. A name above 255 characters can be registered and is listed, but cannot be
 *        called from JavaScript. One above 4095 is cut there, and registering it again adds
 *        another. Null registers nothing.
 * \param handler the function that performs the method. With null the method is listed, and its
 *        calls are answered like those of an unknown method, with the exception "Unknown Function".
 *
 * \return TAV_NOERROR, always. When there is no memory for it, the method stays unknown, and the
 *         failure shows in its message alone: "Could not allocate memory".
 *
 * \sa TAV_JSRegistrationComplete
 */
TAV_API int TAV_RegisterJSHandler(const char *methodName, TAV_JSHandler handler);

/**
 * Connects the native methods with the page.
 *
 * From now on the page can list and call them, and TAV_CallJS() works. May be called again. Once it
 * has succeeded it stays in force; neither a later failure nor TAV_Quit() undoes it.
 *
 * \return TAV_NOERROR, or a failure:
 *         - TAV_ECONNECTION, "Could not register JS Handlers. Either this was not launched as a
 *           plugin, or the IPC is not yet set up." (one line): the host refused.
 *
 * \sa TAV_RegisterJSHandler
 */
TAV_API int TAV_JSRegistrationComplete(void);

/**
 * Gets the number of parameters of a method call.
 *
 * The page decides the number. It is never larger than the number of parameters that arrived, but
 * it can be negative.
 *
 * \param parameters the call that was handed to the handler, or null.
 *
 * \return the record's count; 0 when \p parameters is null.
 */
TAV_API int TAV_GetNumJSParams(TAV_JSParameters *parameters);

/**
 * Gets a parameter of a method call as text.
 *
 * \param parameters the call that was handed to the handler, or null.
 * \param index the parameter's index, from 0.
 *
 * \return the parameter, which belongs to the library and is valid during the handler's call only.
 *         The empty string when \p parameters is null, \p index is negative or not below the
 *         number of parameters, or the parameter itself is null. Never null.
 */
TAV_API const char *TAV_GetJSParamString(TAV_JSParameters *parameters, int index);

/**
 * Gets a parameter of a method call as an integer.
 *
 * The text is read like strtol() reads it with base 10: white space and a sign may come first, and
 * the first character that does not fit ends the number. "12abc" is 12, "0x10" is 0.
 *
 * \param parameters the call that was handed to the handler, or null.
 * \param index the parameter's index, from 0.
 *
 * \return the number; 0 for text without one, and wherever TAV_GetJSParamString() gives the empty
 *         string. A number outside the range of an `int` gives the nearest that is in it.
 */
TAV_API int TAV_GetJSParamInt(TAV_JSParameters *parameters, int index);

/**
 * Gets a parameter of a method call as a double.
 *
 * The text is read like strtod() reads it, up to the first character that does not fit: "1e2" is
 * 100.0. The decimal separator is that of the C locale that the application has set.
 *
 * \param parameters the call that was handed to the handler, or null.
 * \param index the parameter's index, from 0.
 *
 * \return the number; 0.0 for text without one, and wherever TAV_GetJSParamString() gives the empty
 *         string.
 */
TAV_API double TAV_GetJSParamDouble(TAV_JSParameters *parameters, int index);

/**
 * Sets the result of a method call.
 *
 * It replaces an earlier result or exception of the same call: the last answer counts.
 *
 * \param parameters the call that was handed to the handler. With null nothing is done.
 * \param reply the result; copied. Null stands for the empty text.
 *
 * \return TAV_NOERROR, always. When there is no memory for it, the failure shows in its message
 *         alone, "Could not allocate memory", and the call fails in the page unless a later answer
 *         takes its place.
 *
 * \sa TAV_JSException
 */
TAV_API int TAV_JSReply(TAV_JSParameters *parameters, const char *reply);

/**
 * Answers a method call with an exception, which is thrown in the page's JavaScript.
 *
 * It replaces an earlier result or exception of the same call: the last answer counts.
 *
 * \param parameters the call that was handed to the handler. With null nothing is done.
 * \param message the exception's message; copied. Null stands for the empty text.
 *
 * \return TAV_NOERROR, always. When there is no memory for it, the same as with TAV_JSReply().
 *
 * \sa TAV_JSReply
 */
TAV_API int TAV_JSException(TAV_JSParameters *parameters, const char *message);

/** @} */

/**
 * \defgroup calljs Calling JavaScript
 * @{
 */

/**
 * Calls a JavaScript function of the page in which the application runs as a plug-in.
 *
 * The call goes one way: no result comes back. A page answers by calling a native method.
 *
 * \param functionName the JavaScript function's name. The host refuses null.
 * \param arguments the arguments; they are copied. A null entry arrives as JavaScript's null. May
 *        be null when \p argumentCount is 0.
 * \param argumentCount the number of arguments. The host refuses a negative one, and a positive one
 *        with null \p arguments; nothing can protect against one that is larger than the array.
 *
 * \return TAV_NOERROR when the call was passed on, or a failure, tested in this order:
 *         - TAV_ECONNECTION, "TAV_CallJS only functions in Plug-in components": the application
 *           does not run as a plug-in.
 *         - TAV_UNINIT, "You must call TAV_JSRegistrationComplete before calling TAV_CallJS": it
 *           was not called, or never succeeded.
 *         - TAV_ECONNECTION, "Unable to dispatch message": the host refused the call.
 *
 * \sa TAV_IsPlugin
 * \sa TAV_JSRegistrationComplete
 */
TAV_API int TAV_CallJS(const char *functionName, const char **arguments, int argumentCount);

/** @} */

/**
 * \defgroup preferences System preferences
 *
 * What the user has set on the device, read from the system preferences database, the SQLite file
 * "/var/kora/preferences/systemprefs.db", at each call. Where the file is missing and the
 * application may create it, the call leaves an empty one behind and fails.
 * @{
 */

/**
 * Gets the name that the user gave the device.
 *
 * It is the preference "deviceName", without the double quotes around it where it has both. Escape
 * sequences inside are returned as they are stored. Nothing between the quotes, or a stored name
 * that is a single double quote, gives the empty string.
 *
 * \param buffer receives the name.
 * \param bufferLength the buffer's length in bytes, the terminator counted.
 *
 * \return TAV_NOERROR, or a failure, tested in this order:
 *         - TAV_INVALIDINPUT, "buffer is NULL".
 *         - TAV_INVALIDINPUT, "buffer length must be greater than 0".
 *         - TAV_EDATAACCESS, "Could not open preferences database".
 *         - TAV_EDATAACCESS, "Could not prep device name statement": the file is not such a
 *           database.
 *         - TAV_EOTHER, "Device has no name. Bypassed first use?": there is no such preference.
 *         - TAV_EDATAACCESS, "Could not parse device name": the preference is empty.
 *         - TAV_STRINGTOOSMALL, `"buffer too small. Required length %d, buffer length %d"`, with
 *           the length that the name needs and \p bufferLength.
 */
TAV_API int TAV_GetDeviceName(char *buffer, int bufferLength);

/**
 * Gets the code of the country that the user chose, such as "us".
 *
 * It is the member "countryCode" of the preference "region"; its letter case is as stored.
 *
 * \param buffer receives the code.
 * \param bufferLength the buffer's length in bytes, the terminator counted.
 *
 * \return TAV_NOERROR, or a failure, tested in this order:
 *         - TAV_INVALIDINPUT, "buffer is NULL".
 *         - TAV_INVALIDINPUT, "buffer length must be greater than 0".
 *         - TAV_EDATAACCESS, "Could not open preferences database".
 *         - TAV_EDATAACCESS, "Could not prepare access from database": the file is not such a
 *           database.
 *         - TAV_EDATAACCESS, "Could not access from database": there is no such preference.
 *         - TAV_STRINGTOOSMALL, "The sent-in string was too small to hold the result".
 *         - TAV_EHOSTLOOKUP, no message: the preference has no such member.
 *         - TAV_EOTHER, no message: the preference could not be read in another way.
 *
 * \sa TAV_GetRegionCountryName
 */
TAV_API int TAV_GetRegionCountryCode(char *buffer, int bufferLength);

/**
 * Gets the name of the country that the user chose.
 *
 * It is the member "countryName" of the preference "region".
 *
 * \param buffer receives the name.
 * \param bufferLength the buffer's length in bytes, the terminator counted.
 *
 * \return TAV_NOERROR, or a failure; the same as those of TAV_GetRegionCountryCode().
 *
 * \sa TAV_GetRegionCountryCode
 */
TAV_API int TAV_GetRegionCountryName(char *buffer, int bufferLength);

/**
 * Gets the language that the user chose, with its country, such as "en_us".
 *
 * It is made of the members "languageCode" and "countryCode" of the preference "locale", each at
 * most 31 bytes; their letter case is as stored. The country is that of the language, which need
 * not be the one of TAV_GetRegionCountryCode().
 *
 * \param buffer receives the text: language code, underscore, country code.
 * \param bufferLength the buffer's length in bytes, the terminator counted; 64 is always enough.
 *
 * \return TAV_NOERROR, or a failure, tested in this order:
 *         - TAV_INVALIDINPUT, "buffer is NULL".
 *         - TAV_INVALIDINPUT, "buffer length must be greater than 0".
 *         - for the language code and then for the country code:
 *           - TAV_EDATAACCESS, "Could not open preferences database".
 *           - TAV_EDATAACCESS, "Could not prepare access from database": the file is not such a
 *             database.
 *           - TAV_EDATAACCESS, "Could not access from database": there is no such preference.
 *           - TAV_STRINGTOOSMALL, "The sent-in string was too small to hold the result": the code
 *             is longer than 31 bytes; a larger buffer does not help.
 *           - TAV_EHOSTLOOKUP, no message: the preference has no such member.
 *           - TAV_EOTHER, no message: the preference could not be read in another way.
 *         - TAV_STRINGTOOSMALL, "string buffer too small".
 */
TAV_API int TAV_GetLanguage(char *buffer, int bufferLength);

/** @} */

/**
 * \defgroup hardware Hardware
 *
 * The model comes from the platform's machine name, which the host's portability value
 * "final_spoofing" overrides. All values are fixed for a model; the display itself is not asked.
 *
 * | Id       | Machine name             | Product | Pixels (width x height) | Dpi (h x v) | Ratio |
 * |----------|--------------------------|---------|-------------------------|-------------|-------|
 * | 101, 102 | "harrow", "harrow+"      | zon     | 320 x 480               | 213 x 183   | 1.164 |
 * | 201      | "quern"                  | lute    | 320 x 400               | 190 x 190   | 1.0   |
 * | 301      | "tamarisk"               | unknown | 320 x 400               | 190 x 190   | 1.0   |
 * | 401      | "marshlight"             | unknown | 320 x 480               | 213 x 183   | 1.164 |
 * | 501      | "cinnabar"               | unknown | 480 x 800               | 260 x 260   | 1.0   |
 * | 601      | "ember"                  | unknown | 1024 x 768              | 132 x 132   | 1.0   |
 * | 701      | "fern"                   | unknown | 1024 x 768              | 182 x 182   | 1.0   |
 * | -1       | any other                | unknown | 0 x 0                   | 0 x 0       | 0.0   |
 * @{
 */

/**
 * The physical characteristics of a model's screen.
 *
 * \sa TAV_GetScreenMetrics
 */
typedef struct TAV_ScreenMetrics {
    int widthPixels;   /**< Horizontal size in pixels, whatever the current orientation. */
    int heightPixels;  /**< Vertical size in pixels, whatever the current orientation. */
    int horizontalDpi; /**< Horizontal density in dots per inch. */
    int verticalDpi;   /**< Vertical density in dots per inch. */
    double dpiRatio;   /**< Horizontal over vertical density, rounded: 1.164 or 1.0. */
} TAV_ScreenMetrics;

/**
 * Gets the number of the device's model.
 *
 * The first known model that is found is kept until the process ends; as long as the hardware is
 * unknown, every call looks again. The machine name must match exactly, letter case included.
 *
 * \return 101, 102, 201, 301, 401, 501, 601 or 701; -1 for unknown hardware. It sets no message.
 */
TAV_API int TAV_GetHardwareID(void);

/**
 * Gets the device's product name.
 *
 * \return "zon" for the models 101 and 102, "lute" for 201, and "unknown" for every other, also for
 *         those whose screen is known. A static text; never null, never freed.
 *
 * \sa TAV_GetHardwareID
 */
TAV_API const char *TAV_GetHardware(void);

/**
 * Gets the physical characteristics of the screen.
 *
 * \param outMetrics receives the values; all of them 0 for unknown hardware.
 *
 * \return TAV_NOERROR, or a failure:
 *         - TAV_INVALIDINPUT, "outMetrics must not be NULL".
 *         - TAV_EOTHER, "unknown hardware".
 *
 * \sa TAV_GetHardwareID
 */
TAV_API int TAV_GetScreenMetrics(TAV_ScreenMetrics *outMetrics);

/** @} */

/**
 * \defgroup identity Identity, version and environment
 * @{
 */

/*
 * Some C libraries define major and minor as macros with one argument. Such a macro leaves alone a
 * name without a parenthesis behind it, so the fields below need no protection.
 */

/**
 * The version of the operating system.
 *
 * \sa TAV_GetOSVersion
 */
typedef struct TAV_OSVersion {
    int major;             /**< The first number. */
    int minor;             /**< The second number. */
    int revision;          /**< The third number; 0 where there is none. */
    char versionText[256]; /**< The whole text; all bytes after it are 0. */
} TAV_OSVersion;

/**
 * The IPv4 configuration of a network interface.
 *
 * The addresses are in network byte order, as `s_addr` of a socket address has them.
 *
 * \sa TAV_GetNetInfo
 */
typedef struct TAV_NetInfo {
    Uint32 address;   /**< The interface's address. */
    Uint32 netmask;   /**< Its netmask. */
    Uint32 broadcast; /**< Its broadcast address. */
} TAV_NetInfo;

/**
 * Gets the device's unique identifier.
 *
 * It is the content of the file "/proc/nduid", without the one line feed at its end. A content that
 * is longer than the buffer allows is cut to \p bufferLength - 1 bytes; that is no failure.
 *
 * \param buffer receives the identifier. When the file cannot be opened or read, it holds the empty
 *        string.
 * \param bufferLength the buffer's length in bytes, the terminator counted; at least 64.
 *
 * \return TAV_NOERROR, or a failure, tested in this order:
 *         - TAV_INVALIDINPUT, "buffer is NULL".
 *         - TAV_INVALIDINPUT, "buffer length is invalid": it is 0 or less.
 *         - TAV_STRINGTOOSMALL, "buffer must be at least 64 bytes in length".
 *         - TAV_EDATAACCESS, "could not access ID file".
 *         - TAV_EDATAACCESS, "could not read ID file": it is empty, too.
 */
TAV_API int TAV_GetUniqueID(char *buffer, int bufferLength);

/**
 * Gets the version of the operating system.
 *
 * It is the system property "com.vire.properties.version", of at most 255 bytes. The numbers are
 * the three around the first two dots; the first begins after the last blank before the first dot.
 * A number beyond 32 bits gives the nearest that is in the range, and text where a number should
 * begin gives 0:
 *
 * | Text            | major | minor | revision |
 * |-----------------|-------|-------|----------|
 * | `2.1.0`         | 2     | 1     | 0        |
 * | `1.4`           | 1     | 4     | 0        |
 * | `OS 1.2.3.4`    | 1     | 2     | 3        |
 * | `1.2 build 3.4` | 1     | 2     | 4        |
 * | `v1.2.3`        | 0     | 2     | 3        |
 * | no dot          | 0     | 0     | 0        |
 *
 * \param version receives the version. When the property cannot be read, its numbers are 0 and its
 *        text is empty.
 *
 * \return TAV_NOERROR, also for a text without numbers, or a failure:
 *         - TAV_INVALIDINPUT, "sent-in version pointer is NULL".
 *         - TAV_EOTHER, "Unable to extract OS version information": there is no such property, or
 *           it is too long.
 */
TAV_API int TAV_GetOSVersion(TAV_OSVersion *version);

/**
 * Gets the IPv4 configuration of a network interface from the kernel.
 *
 * \param interfaceName the interface's name, such as "eth0"; only its first 16 bytes count.
 * \param info receives the addresses. After TAV_ENETWORK it holds those that were found before the
 *        failure, and 0 for the others.
 *
 * \return TAV_NOERROR, or a failure, tested in this order:
 *         - TAV_INVALIDINPUT, "interface name is NULL".
 *         - TAV_INVALIDINPUT, "interface name is empty".
 *         - TAV_INVALIDINPUT, "interface info is NULL".
 *         - TAV_ENETWORK, "Could not access network information": there is no such interface, it
 *           has no address or the address 0, or the kernel does not tell one of the three.
 */
TAV_API int TAV_GetNetInfo(const char *interfaceName, TAV_NetInfo *info);

/**
 * An alias of TAV_GetNetInfo(), for applications that were built with this name.
 *
 * \param interfaceName as for TAV_GetNetInfo().
 * \param info as for TAV_GetNetInfo().
 *
 * \return the result of TAV_GetNetInfo().
 */
TAV_API int TAVNet_Get_Info(const char *interfaceName, TAV_NetInfo *info);

/**
 * Gets the path from which the application was called.
 *
 * It is always the relative path "./"; nothing is looked up.
 *
 * \param buffer receives the path.
 * \param bufferLength the buffer's length in bytes, the terminator counted; at least 3.
 *
 * \return TAV_NOERROR, or a failure, tested in this order:
 *         - TAV_INVALIDINPUT, "buffer is NULL".
 *         - TAV_INVALIDINPUT, "buffer length is invalid": it is 0 or less.
 *         - TAV_STRINGTOOSMALL, `"buffer too small. Required length 3, buffer length %d"`, with
 *           \p bufferLength.
 *
 * \sa TAV_GetDataFilePath
 */
TAV_API int TAV_GetCallingPath(char *buffer, int bufferLength);

/**
 * Gets the path of one of the application's data files from the host.
 *
 * The file need not exist.
 *
 * \param dataFileName the file's name; the empty name asks for the data folder itself.
 * \param buffer receives the path.
 * \param bufferLength the buffer's length in bytes, the terminator counted.
 *
 * \return TAV_NOERROR, or a failure, tested in this order:
 *         - TAV_INVALIDINPUT, "buffer is NULL".
 *         - TAV_INVALIDINPUT, "buffer length must be greater than 0".
 *         - TAV_INVALIDINPUT, "dataFileName is NULL".
 *         - TAV_STRINGTOOSMALL, no message: the path does not fit.
 *         - TAV_EHOSTLOOKUP, no message: the host has no such path.
 *         - TAV_EOTHER, no message: the host failed in another way.
 */
TAV_API int TAV_GetDataFilePath(const char *dataFileName, char *buffer, int bufferLength);

/**
 * Gets a value of the application's information from the host.
 *
 * \param name the value's key, such as "id" for the application's id.
 * \param buffer receives the value, as text.
 * \param bufferLength the buffer's length in bytes, the terminator counted.
 *
 * \return TAV_NOERROR, or a failure, tested in this order:
 *         - TAV_INVALIDINPUT, "buffer is NULL".
 *         - TAV_INVALIDINPUT, "buffer length must be greater than 0".
 *         - TAV_INVALIDINPUT, "name is NULL".
 *         - TAV_INVALIDINPUT, "name must not be blank": it is the empty string.
 *         - TAV_STRINGTOOSMALL, no message: the value does not fit.
 *         - TAV_EHOSTLOOKUP, no message: there is no such value.
 *         - TAV_EOTHER, no message: the host failed in another way.
 */
TAV_API int TAV_GetAppinfoValue(const char *name, char *buffer, int bufferLength);

/**
 * Gets a printable name of a key.
 *
 * Three key codes stand for gestures on the device: 27 (SDLK_ESCAPE) is "Gesture back", 229
 * (SDLK_WORLD_69) "Gesture forward" and 231 (SDLK_WORLD_71) "Gesture area". Every other has the
 * name that SDL_GetKeyName() gives; SDL knows its names once its video subsystem is running.
 *
 * \param key the key code, a value of SDLKey or any other.
 *
 * \return the name; SDL's "unknown key" for a key without one and for a code that is no key. It
 *         belongs to the library or to SDL; never null, never freed.
 */
TAV_API const char *TAV_GetKeyName(int key);

/** @} */

/**
 * \defgroup compass Compass
 *
 * The library keeps the latest reading that the host delivers; TAV_GetCompass() copies it, and the
 * event \ref TAV_EVENT_COMPASS announces it. There is no compass for plug-ins.
 * @{
 */

/**
 * A compass reading.
 *
 * The host decides what its three values mean; the library stores them as they come.
 */
typedef struct TAV_CompassReading {
    int intValue;        /**< The first value; 0 before the first reading. */
    double doubleValue1; /**< The second value; -1.0 before the first reading. */
    double doubleValue2; /**< The third value; -1.0 before the first reading. */
} TAV_CompassReading;

/**
 * The `code` of the SDL_USEREVENT that announces a compass reading.
 *
 * `data1` points to a \ref TAV_CompassReading, `data2` is not used. It is the library's live
 * state, valid until the library is unloaded: a later reading, or TAV_Init(), overwrites what an
 * older event still points to. Read it only. Every reading that the host delivers is announced,
 * also while the compass is disabled; events need TAV_Init(), which connects the compass.
 */
#define TAV_EVENT_COMPASS 0xE110

/**
 * Switches the compass on or off.
 *
 * TAV_Init() must have been called for readings to arrive; this call itself does not need it. The
 * last reading stays stored when the compass is switched off and on again.
 *
 * \param activate true to switch on.
 *
 * \return TAV_NOERROR, or a failure, after which the compass is as it was:
 *         - TAV_EOTHER, "Compass currently not supported for Plugins".
 *         - TAV_ECONNECTION, no message: the host refused.
 *
 * \sa TAV_GetCompass
 */
TAV_API int TAV_EnableCompass(SDL_bool activate);

/**
 * Gets the latest compass reading.
 *
 * \param reading receives the reading: 0, -1.0, -1.0 when none has come since TAV_Init().
 *
 * \return TAV_NOERROR, or a failure, tested in this order:
 *         - TAV_UNINIT, "You must call TAV_Init before calling TAV_GetCompass".
 *         - TAV_UNINIT, "You must call TAV_EnableCompass before calling TAV_GetCompass": the
 *           compass is off.
 *         - TAV_INVALIDINPUT, "Sent-in value was NULL".
 *
 * \sa TAV_EnableCompass
 */
TAV_API int TAV_GetCompass(TAV_CompassReading *reading);

/** @} */

/**
 * \defgroup location Location
 *
 * Tracking is a subscription to the location service, "vire://com.vire.location/startTracking".
 * The library keeps the latest position fix or the failure of the tracking; TAV_GetLocation()
 * copies it, and events announce it. TAV_Init() is not needed.
 *
 * A failure ends the tracking in effect: no later fix is stored. Call TAV_EnableLocationTracking()
 * with SDL_FALSE and then with SDL_TRUE to begin again.
 * @{
 */

/**
 * A position fix.
 *
 * The location service decides units and ranges; the library neither converts nor checks the
 * values. All seven are -1.0 as long as there has been no fix.
 */
typedef struct TAV_Location {
    double latitude;      /**< Latitude. */
    double longitude;     /**< Longitude. */
    double altitude;      /**< Altitude. */
    double horizAccuracy; /**< Horizontal accuracy. */
    double vertAccuracy;  /**< Vertical accuracy. */
    double heading;       /**< Heading. */
    double velocity;      /**< Velocity. */
} TAV_Location;

/**
 * The `code` of the SDL_USEREVENT that announces a position fix.
 *
 * `data1` points to a \ref TAV_Location, `data2` is not used. It is the library's live state, valid
 * until the library is unloaded: a later fix overwrites what an older event still points to. Read
 * it only.
 */
#define TAV_EVENT_LOCATION 0xE100

/**
 * The `code` of the SDL_USEREVENT that announces that tracking has failed.
 *
 * `data1` points to an `int`, the failure's code: TAV_ELOCATIONSERVICE, or TAV_EOTHER for an
 * unusable or unknown answer of the service. `data2` is not used. It is the library's live state,
 * valid until the library is unloaded: a later failure overwrites what an older event still points
 * to, and TAV_EnableLocationTracking() resets it to 0. Read it only. Once tracking has failed, each
 * further fix or failure that arrives pushes this event again.
 */
#define TAV_EVENT_LOCATION_FAILURE 0xE101

/**
 * Switches location tracking on or off.
 *
 * Either way a recorded failure is forgotten. The stored fix stays: until the first new one,
 * TAV_GetLocation() gives that of the tracking before.
 *
 * Switch off before you switch on again. Switching on twice subscribes twice: the fixes of both
 * arrive, and switching off cancels only the second. Replies that come while tracking is off are
 * dropped.
 *
 * \param activate true to switch on.
 *
 * \return TAV_NOERROR; switching off always succeeds. Failures:
 *         - TAV_ECONNECTION, "Unable to communicate with app card": the bus refused the
 *           subscription. Tracking is on or off as it was, and a recorded failure stays, but an
 *           earlier subscription can no longer be cancelled.
 *
 * \sa TAV_GetLocation
 */
TAV_API int TAV_EnableLocationTracking(SDL_bool activate);

/**
 * Gets the latest position fix.
 *
 * \param location receives the fix; seven times -1.0 when there has been none.
 *
 * \return TAV_NOERROR, or a failure, tested in this order:
 *         - TAV_INVALIDINPUT, "location is NULL".
 *         - TAV_UNINIT, "GPS tracking is not on (call TAV_EnableLocationTracking)".
 *         - TAV_ELOCATIONSERVICE, "GPS failure": the location service reported that it failed.
 *         - TAV_EOTHER, "GPS failure": an answer of the service was not JSON, lacked a value, or
 *           reported an unknown error. The trace tells which.
 *
 * \sa TAV_EnableLocationTracking
 */
TAV_API int TAV_GetLocation(TAV_Location *location);

/** @} */

/**
 * \defgroup actions Device actions
 *
 * One-way requests to services of the device. Each returns as soon as its request is dispatched;
 * TAV_NOERROR says no more than that. What the service answers is never seen.
 * @{
 */

/**
 * Vibrates the device.
 *
 * Sends `{"period":100, "duration":500}` (with the given values) to the service
 * "vire://com.vire.vibrate/vibrate".
 *
 * \param periodMS the period of the vibration in milliseconds, 0 or more.
 * \param durationMS how long to vibrate, in milliseconds, 0 or more. With 0 nothing is sent.
 *
 * \return TAV_NOERROR, or a failure, tested in this order:
 *         - TAV_INVALIDINPUT, "durationMS must be >= 0".
 *         - TAV_INVALIDINPUT, "periodMS must be >= 0".
 *         - TAV_ECONNECTION, "Unable to communicate with app card": the bus refused the request.
 */
TAV_API int TAV_Vibrate(int periodMS, int durationMS);

/**
 * Opens or closes a port of the device's firewall, for TCP and for UDP.
 *
 * Sends two rules to the service "kora://com.vire.firewall/portCtrl": first for TCP with the label
 * "tavportT_PORT", then for UDP with "tavportU_PORT", where PORT is the number.
 *
 * \param port the port's number, above 1024; there is no upper bound.
 * \param enable true to open, SDL_FALSE to close.
 *
 * \return TAV_NOERROR when both rules were dispatched, or a failure, tested in this order:
 *         - TAV_INVALIDINPUT, "port must be greater than 1024".
 *         - TAV_ECONNECTION, "Unable to communicate with app card": the bus refused a rule. When it
 *           was the first, the second is not sent. When it was the second, the first stays in
 *           force, so that the port is changed for TCP only.
 */
TAV_API int TAV_SetFirewallPortStatus(int port, SDL_bool enable);

/**
 * Tells the device that the application plays music, so that its media players pause.
 *
 * Sends `{}` to the service "vire://com.vire.mediad/service/pauseAllMediaPlayback".
 *
 * \param musicPlaying true to pause the players. With SDL_FALSE nothing is sent: there is no
 *        request that lets them play on.
 *
 * \return TAV_NOERROR, or a failure:
 *         - TAV_ECONNECTION, "Unable to communicate with app card": the bus refused the request.
 */
TAV_API int TAV_NotifyMusicPlaying(SDL_bool musicPlaying);

/**
 * Opens a page in the web browser.
 *
 * Asks the service "vire://com.vire.applicationManager/launch" for the application
 * "com.vire.app.browser".
 *
 * \param url the page; of any length. It goes into the request without JSON escaping.
 *
 * \return TAV_NOERROR, or a failure:
 *         - TAV_INVALIDINPUT, "NULL URL sent to TAV_LaunchBrowser".
 *         - TAV_ECONNECTION, "Unable to communicate with app card": the bus refused the request, or
 *           there is no memory for it.
 */
TAV_API int TAV_LaunchBrowser(const char *url);

/**
 * Opens the e-mail application with a new message.
 *
 * Asks the service "vire://com.vire.applicationManager/launch" for the application
 * "com.vire.app.email".
 *
 * \param subject the message's subject; of any length. It goes into the request without JSON
 *        escaping.
 * \param body the message's text; the same.
 *
 * \return TAV_NOERROR, or a failure, tested in this order:
 *         - TAV_INVALIDINPUT, "Subject is null".
 *         - TAV_INVALIDINPUT, "Body is null".
 *         - TAV_ECONNECTION, "Unable to communicate with app card": the bus refused the request, or
 *           there is no memory for it.
 *
 * \sa TAV_LaunchEmailTo
 */
TAV_API int TAV_LaunchEmail(const char *subject, const char *body);

/**
 * Opens the e-mail application with a new message to somebody.
 *
 * Like TAV_LaunchEmail(), with recipients. With no recipients it is TAV_LaunchEmail().
 *
 * \param subject the message's subject; of any length. It goes into the request without JSON
 *        escaping.
 * \param body the message's text; the same.
 * \param numRecipients the number of recipients. With 0 or less \p recipients is not looked at.
 * \param recipients the recipients' addresses; each goes into the request without JSON escaping.
 *
 * \return TAV_NOERROR, or a failure, tested in this order:
 *         - TAV_INVALIDINPUT, "Subject is null".
 *         - TAV_INVALIDINPUT, "Body is null".
 *         - TAV_INVALIDINPUT, "recipients is null".
 *         - TAV_INVALIDINPUT, "bad recipient": an address is null.
 *         - TAV_ECONNECTION, "Unable to communicate with app card": the bus refused the request, or
 *           there is no memory for it.
 *
 * \sa TAV_LaunchEmail
 */
TAV_API int TAV_LaunchEmailTo(const char *subject, const char *body, int numRecipients,
                              const char **recipients);

/** @} */

/**
 * \defgroup controls Window, input and screen
 *
 * Switches of the host and of the device's SDL. Each is passed on at once; the library
 * remembers nothing and restores nothing after a failure. TAV_SetKeyboardState(), TAV_Minimize()
 * and TAV_SetTouchAggression() are not for plug-ins, the others are for all.
 * @{
 */

/** The screen's orientations; the texts are the names that the device's SDL gets. */
typedef enum TAV_Orientation {
    TAV_ORIENTATION_BOTTOM = 0, /**< "bottom" */
    TAV_ORIENTATION_RIGHT = 1,  /**< "right" */
    TAV_ORIENTATION_TOP = 2,    /**< "top" */
    TAV_ORIENTATION_LEFT = 3    /**< "left" */
} TAV_Orientation;

/**
 * Shows or hides the on-screen keyboard.
 *
 * \param visible true to show.
 *
 * \return TAV_NOERROR, or a failure:
 *         - TAV_EOTHER, "Not allowed to bring up the keyboard as a plugin": also for hiding it.
 *         - TAV_ECONNECTION, "Could not communicate with card": the host refused.
 */
TAV_API int TAV_SetKeyboardState(SDL_bool visible);

/**
 * Minimizes the application: puts it into the background.
 *
 * \return TAV_NOERROR, or a failure; both have the same code:
 *         - TAV_EOTHER, "You can not minimize a Plugin".
 *         - TAV_EOTHER, "Failed IPC communication for minimize": the host refused.
 */
TAV_API int TAV_Minimize(void);

/**
 * Sets the touch aggression.
 *
 * The host decides what its two settings mean.
 *
 * \param aggression 1 for the setting 1; any other value for the setting -1.
 *
 * \return TAV_NOERROR, or a failure; both have the same message:
 *         - TAV_EOTHER, "Could not communicate with Touch Aggression service": the application is a
 *           plug-in.
 *         - TAV_ECONNECTION, "Could not communicate with Touch Aggression service": the host
 *           refused.
 */
TAV_API int TAV_SetTouchAggression(int aggression);

/**
 * Switches the custom pause UI on or off.
 *
 * \param enable true to switch on; SDL_NimboHookCustomPauseUiEnable() of the device's SDL gets it
 *        as it is.
 *
 * \return TAV_NOERROR, or a failure:
 *         - TAV_ECONNECTION, "Unable to communicate with app card": the device's SDL refused.
 */
TAV_API int TAV_CustomPauseUiEnable(SDL_bool enable);

/**
 * Switches the gestures on or off.
 *
 * \param enable true to switch on; SDL_NimboHookSetGesturesEnable() of the device's SDL gets it as
 *        it is.
 *
 * \return TAV_NOERROR, or a failure:
 *         - TAV_ECONNECTION, "Unable to communicate with app card": the device's SDL refused.
 *
 * \sa TAV_GetKeyName
 */
TAV_API int TAV_GesturesEnable(SDL_bool enable);

/**
 * Switches banner messages on or off.
 *
 * \param enable true to switch on; SDL_NimboHookBannerMessagesEnable() of the device's SDL gets it
 *        as it is.
 *
 * \return TAV_NOERROR, or a failure:
 *         - TAV_ECONNECTION, "Unable to communicate with app card": the device's SDL refused.
 */
TAV_API int TAV_BannerMessagesEnable(SDL_bool enable);

/**
 * Sets the screen's orientation.
 *
 * The values of TAV_GetScreenMetrics() do not change with it.
 *
 * \param orientation one of the four values of TAV_Orientation;
 *        SDL_NimboHookSetOrientation() of the device's SDL gets its name.
 *
 * \return TAV_NOERROR, or a failure:
 *         - TAV_INVALIDINPUT, "invalid orientation": it is none of the four.
 *         - TAV_ECONNECTION, "Unable to communicate with app card": the device's SDL refused.
 */
TAV_API int TAV_SetOrientation(TAV_Orientation orientation);

/**
 * Switches the screen's time-out on or off.
 *
 * \param enable true to switch on; SDL_NimboHookScreenTimeoutEnable() of the device's SDL gets it
 *        as it is.
 *
 * \return TAV_NOERROR, or a failure:
 *         - TAV_ECONNECTION, "Unable to communicate with app card": the device's SDL refused.
 */
TAV_API int TAV_ScreenTimeoutEnable(SDL_bool enable);

/** @} */

/**
 * \defgroup purchase In-app purchase
 *
 * Requests to the platform's payment service, "vire://com.vire.service.payment". Each of the four
 * requests waits for the service's answer and returns it as a record, which holds the whole JSON
 * text of the answer, byte for byte. The application parses it; its content is the service's.
 *
 * **While a request waits**, it polls SDL events every 50 milliseconds, so that the answer can
 * arrive, and drops every event that it finds: input, SDL_QUIT and user events alike, also those
 * that were queued before. Compass readings and locations are still stored. Reply functions and
 * JavaScript handlers can run meanwhile.
 *
 * **Failures** are answered with null. In addition to those that a request names:
 *
 * - "Could not allocate HString": there is no memory.
 * - "failed to dispatch call": the bus refused the request.
 * - "Timed out waiting for response to call": no answer within 15 seconds (not for
 *   TAV_PurchaseItem()). The request is cancelled.
 * - `"Failure on dispatch: %s"`, with the answer: its member "returnValue" is false, or text
 *   that says so in any letter case. The message keeps the first 127 bytes of the answer only.
 *
 * An answer that reports an error in any other way counts as success, as does one whose member
 * cannot be read for want of memory: look at its content.
 * @{
 */

/** The items that can be bought, as TAV_GetAvailableItems() returns them. */
typedef struct TAV_ItemCollection TAV_ItemCollection;

/** A purchase, as TAV_PurchaseItem() and TAV_GetPendingPurchaseInfo() return it. */
typedef struct TAV_ItemReceipt TAV_ItemReceipt;

/** An item, as TAV_GetItemInfo() returns it. */
typedef struct TAV_ItemInfo TAV_ItemInfo;

/**
 * Asks for all items, perishable or not, purchased or not.
 *
 * Sends a request to "vire://com.vire.service.payment/getAvailableItems" and waits at most 15
 * seconds.
 *
 * \return a new record, to be released with TAV_FreeItemCollection(); null after a failure, one of
 *         those of every purchase request.
 *
 * \sa TAV_GetItemCollectionJSON
 */
TAV_API TAV_ItemCollection *TAV_GetAvailableItems(void);

/**
 * Buys an item.
 *
 * Sends a request to "vire://com.vire.service.payment/purchaseItem" and waits without limit, until
 * the service answers.
 *
 * \param itemID the item; it goes into the request without JSON escaping.
 * \param qty how many; must be 1.
 * \param vendorData text of the application's own that goes along with the purchase, without JSON
 *        escaping; null leaves it out, the empty string does not.
 *
 * \return a new record, to be released with TAV_FreeItemReceipt(); null after a failure: those of
 *         every purchase request, except the time-out, and before anything is sent, in this order:
 *         - "itemID is NULL".
 *         - "qty must be set to 1".
 *
 * \sa TAV_GetItemReceiptJSON
 * \sa TAV_GetPendingPurchaseInfo
 */
TAV_API TAV_ItemReceipt *TAV_PurchaseItem(const char *itemID, int qty, const char *vendorData);

/**
 * Asks for an item and at most 16 of its receipts.
 *
 * Sends a request to "vire://com.vire.service.payment/getItemInfo" and waits at most 15 seconds.
 *
 * \param itemID the item; it goes into the request without JSON escaping.
 *
 * \return a new record, to be released with TAV_FreeItemInfo(); null after a failure: those of
 *         every purchase request, and before anything is sent:
 *         - "itemID is NULL".
 *
 * \sa TAV_GetItemJSON
 */
TAV_API TAV_ItemInfo *TAV_GetItemInfo(const char *itemID);

/**
 * Asks for a pending purchase.
 *
 * Sends a request to "vire://com.vire.service.payment/getPendingPurchaseInfo" and waits at most 15
 * seconds.
 *
 * \param orderNo the purchase's order number; it goes into the request without JSON escaping.
 *
 * \return a new record, to be released with TAV_FreeItemReceipt(); null after a failure: those of
 *         every purchase request, and before anything is sent:
 *         - "orderNo is NULL".
 *
 * \sa TAV_GetItemReceiptJSON
 */
TAV_API TAV_ItemReceipt *TAV_GetPendingPurchaseInfo(const char *orderNo);

/**
 * Gets the JSON text of a record of TAV_GetAvailableItems().
 *
 * \param itemCollectionInfo the record.
 *
 * \return the payment service's answer. It belongs to the record: do not change or free it. It is
 *         valid until the record is released, and the same at each call. Null after a failure:
 *         - "itemCollectionInfo is NULL".
 */
TAV_API const char *TAV_GetItemCollectionJSON(const TAV_ItemCollection *itemCollectionInfo);

/**
 * Gets the JSON text of a record of TAV_PurchaseItem() or TAV_GetPendingPurchaseInfo().
 *
 * \param receipt the record.
 *
 * \return the payment service's answer. It belongs to the record: do not change or free it. It is
 *         valid until the record is released, and the same at each call. Null after a failure:
 *         - "receipt is NULL".
 */
TAV_API const char *TAV_GetItemReceiptJSON(const TAV_ItemReceipt *receipt);

/**
 * Gets the JSON text of a record of TAV_GetItemInfo().
 *
 * \param itemInfo the record.
 *
 * \return the payment service's answer. It belongs to the record: do not change or free it. It is
 *         valid until the record is released, and the same at each call. Null after a failure:
 *         - "itemInfo is NULL".
 */
TAV_API const char *TAV_GetItemJSON(const TAV_ItemInfo *itemInfo);

/**
 * Releases a record of TAV_GetAvailableItems(), and its text.
 *
 * \param itemCollectionInfo the record. With null nothing is released, and the message
 *        "itemCollectionInfo is NULL" is set.
 */
TAV_API void TAV_FreeItemCollection(TAV_ItemCollection *itemCollectionInfo);

/**
 * Releases a record of TAV_PurchaseItem() or TAV_GetPendingPurchaseInfo(), and its text.
 *
 * \param receipt the record. With null nothing is released, and the message "receipt is NULL" is
 *        set.
 */
TAV_API void TAV_FreeItemReceipt(TAV_ItemReceipt *receipt);

/**
 * Releases a record of TAV_GetItemInfo(), and its text.
 *
 * \param itemInfo the record. With null nothing is released, and the message "itemInfo is NULL" is
 *        set.
 */
TAV_API void TAV_FreeItemInfo(TAV_ItemInfo *itemInfo);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
