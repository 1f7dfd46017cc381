"""Loads the library at run time, and asks for the device's name and a reply: loads_library.py
[PLATFORM] LIBRARY"""

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
name, other = ctypes.create_string_buffer(64), ctypes.create_string_buffer(4096)
for what, code in (("name", tav.TAV_GetDeviceName(name, 64)), ("id", tav.TAV_GetUniqueID(other, 64)),
                   ("data", tav.TAV_GetDataFilePath(b"save", other, 4096))):
    if code != 0:
        print(what + ":")
uri = b"vire://com.vire.battery/status"
if tav.TAV_ServiceCallWithCallback(uri, b"{}", on_reply, None, 1) != 0:
    sys.exit("no call: " + tav.TAV_GetError().decode())
while not answers:
    sdl.SDL_PollEvent(ctypes.create_string_buffer(64))
    sdl.SDL_Delay(5)
print(name.value.decode(), "percent", answers[0])
