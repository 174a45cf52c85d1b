// A virtual display has one output, and GDK takes no notice of a monitor without an output. These
// functions stand before those of libXrandr and lend such a monitor the output of the first.

#include <X11/extensions/Xrandr.h>
#include <dlfcn.h>

namespace {

constexpr RROutput kLentOutput = 0x7FFF0000;  // no server hands out such a number

template <class Function>
Function* next(Function* /*same*/, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

RROutput firstOutput(Display* display) {
  XRRScreenResources* resources = XRRGetScreenResourcesCurrent(display, DefaultRootWindow(display));
  const RROutput output = resources->outputs[0];
  XRRFreeScreenResources(resources);
  return output;
}

}  // namespace

extern "C" {

XRRMonitorInfo* XRRGetMonitors(Display* display, Window window, Bool active, int* count) {
  static RROutput lent = kLentOutput;
  XRRMonitorInfo* monitors = next(XRRGetMonitors, "XRRGetMonitors")(display, window, active, count);
  for (int i = 0; i < *count; ++i) {
    if (monitors[i].noutput == 0) {
      monitors[i].noutput = 1;
      monitors[i].outputs = &lent;
    }
  }
  return monitors;
}

XRROutputInfo* XRRGetOutputInfo(Display* display, XRRScreenResources* resources, RROutput output) {
  return next(XRRGetOutputInfo, "XRRGetOutputInfo")(
      display, resources, output == kLentOutput ? firstOutput(display) : output);
}

int XRRGetOutputProperty(Display* display, RROutput output, Atom property, long offset, long length,
                         Bool deletes, Bool pending, Atom requestedType, Atom* type, int* format,
                         unsigned long* items, unsigned long* rest, unsigned char** value) {
  return next(XRRGetOutputProperty, "XRRGetOutputProperty")(
      display, output == kLentOutput ? firstOutput(display) : output, property, offset, length,
      deletes, pending, requestedType, type, format, items, rest, value);
}

}  // extern "C"
