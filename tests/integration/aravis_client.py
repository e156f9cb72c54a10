#!/usr/bin/python3
"""A client that is not ours: takes frames of a published pattern camera through Aravis and compares every pixel.

    aravis_client.py ADDRESS WIDTH HEIGHT FRAMES [PACKET_SIZE]
"""
import struct
import sys

import gi

gi.require_version("Aravis", "0.8")
from gi.repository import Aravis  # noqa: E402


def pattern(size):
    """The camera's noise: block n of a stream begins n * 61 bytes into it, modulo 65536."""
    mask = (1 << 64) - 1
    state = 0x9E3779B97F4A7C15
    words = []
    for _ in range((size + 7) // 8):
        state ^= (state << 13) & mask
        state ^= state >> 7
        state ^= (state << 17) & mask
        words.append(struct.pack(">Q", state))
    return b"".join(words)


def main():
    address, width, height, frames = sys.argv[1], *map(int, sys.argv[2:5])
    size = width * height
    noise = pattern(size + 65536)
    camera = Aravis.Camera.new(address)
    if len(sys.argv) > 5:
        camera.gv_set_packet_size(int(sys.argv[5]))
    payload = camera.get_payload()
    assert payload == size, f"payload {payload}, expected {size}"
    # The link is a virtual one: what reads below UDP would see trains of packets that nothing has cut yet.
    camera.gv_set_stream_options(Aravis.GvStreamOption.PACKET_SOCKET_DISABLED)
    stream = camera.create_stream(None, None)
    stream.set_property("socket-buffer", Aravis.GvStreamSocketBuffer.FIXED)
    stream.set_property("socket-buffer-size", 4 << 20)
    stream.set_property("packet-request-ratio", 2.0)  # a busy machine may lose more than a quarter of a frame
    for _ in range(100):
        stream.push_buffer(Aravis.Buffer.new_allocate(payload))
    camera.start_acquisition()
    shift, last_stamp, last_id, complete = None, 0, None, 0
    for frame in range(-1, frames):
        buffer = stream.timeout_pop_buffer(3000000)
        assert buffer is not None, f"no frame after {frame}"
        if frame < 0:  # this client enlarges its socket's buffer when it has seen the first packets
            stream.push_buffer(buffer)
            continue
        status = buffer.get_status()
        assert status == Aravis.BufferStatus.SUCCESS, f"frame {frame}: {status}"
        identity, stamp = buffer.get_frame_id(), buffer.get_timestamp()
        if last_id is not None:
            assert identity == last_id % 65535 + 1, f"frame {identity} after {last_id}"
        assert stamp > last_stamp, f"frame {identity}: time stamp {stamp} after {last_stamp}"
        data = bytes(buffer.get_data())
        if shift is None:  # what the camera calls its first frame
            shift = next((n for n in range(200) if data == noise[(identity + n) * 61 % 65536:][:size]), None)
            assert shift is not None, "the first frame is none of the camera's"
        start = (identity + shift) * 61 % 65536
        assert data == noise[start : start + size], f"frame {identity}: other pixels than the camera's"
        last_id, last_stamp = identity, stamp
        complete += 1
        stream.push_buffer(buffer)
    camera.stop_acquisition()
    print(f"frames {complete}")


main()
