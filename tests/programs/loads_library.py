"""Loads the library itself, in place of being linked with it, and asks for the device's name and for
a reply: loads_library.py [PLATFORM] LIBRARY"""

import ctypes
import sys

for platform in sys.argv[1:-1]:
    ctypes.CDLL(platform, ctypes.RTLD_GLOBAL)
tav = ctypes.CDLL(sys.argv[-1])
tav.TAV_GetError.restype = ctypes.c_char_p
ctypes.CDLL("libSDL-1.2.so.0", ctypes.RTLD_GLOBAL)
sdl = ctypes.CDLL(None)


@ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_void_p)
def on_reply(parameters, user_data):
    answers.append(tav.TAV_GetParamInt(ctypes.c_void_p(parameters), b"percent"))


answers = []
tav.TAV_Init(0)
name = ctypes.create_string_buffer(64)
if tav.TAV_GetDeviceName(name, 64) != 0:
    print("name:", tav.TAV_GetError().decode())
identity = ctypes.create_string_buffer(64)
if tav.TAV_GetUniqueID(identity, 64) != 0:
    print("id:", tav.TAV_GetError().decode())
data = ctypes.create_string_buffer(4096)
if tav.TAV_GetDataFilePath(b"save", data, 4096) != 0:
    print("data:", tav.TAV_GetError().decode())
uri = b"vire://com.vire.battery/status"
if tav.TAV_ServiceCallWithCallback(uri, b"{}", on_reply, None, 1) != 0:
    sys.exit("no call: " + tav.TAV_GetError().decode())
while not answers:
    sdl.SDL_PollEvent(ctypes.create_string_buffer(64))
    sdl.SDL_Delay(5)
print(name.value.decode(), "percent", answers[0])
