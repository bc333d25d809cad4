"""Result files and what is made of them, read by programs that know nothing of orvik.

usage: result_files.py CHECK FILE...   (CHECK: the name of a function below)
"""

import csv
import json
import sys

import netCDF4
import numpy as np
import xarray as xr

# Names of the CF standard name table and units that convert to theirs, checked by hand.
STANDARD_NAMES = {
    "time": ("time", "seconds since 1970-01-01 00:00:00"),
    "freq": ("wave_frequency", "Hz"),
    "dir": ("sea_surface_wave_from_direction", "degree"),
    "efth": ("sea_surface_wave_directional_variance_spectral_density", "m2 s degree-1"),
    "variance_density": ("sea_surface_wave_variance_spectral_density", "m2 s"),
    "variance_density_surface_track": ("sea_surface_wave_variance_spectral_density", "m2 s"),
    "hm0": ("sea_surface_wave_significant_height", "m"),
    "h_third": ("sea_surface_wave_significant_height", "m"),
    "h_tenth": ("sea_surface_wave_mean_height_of_highest_tenth", "m"),
    "h_max": ("sea_surface_wave_maximum_height", "m"),
    "tp": ("sea_surface_wave_period_at_variance_spectral_density_maximum", "s"),
    "tm02": (
        "sea_surface_wave_mean_period_from_variance_spectral_density_second_frequency_moment", "s"),
    "tm_10": (
        "sea_surface_wave_mean_period_from_variance_spectral_density_inverse_frequency_moment", "s"),
    "tz": ("sea_surface_wave_zero_upcrossing_period", "s"),
    "peak_direction": (
        "sea_surface_wave_from_direction_at_variance_spectral_density_maximum", "degree"),
    "mean_direction": ("sea_surface_wave_from_direction", "degree"),
    "direction": ("sea_surface_wave_from_direction", "degree"),
    "spread": ("sea_surface_wave_directional_spread", "degree"),
    "peak_spread": (
        "sea_surface_wave_directional_spread_at_variance_spectral_density_maximum", "degree"),
    "water_depth": ("sea_floor_depth_below_sea_surface", "m"),
    "current_speed": ("sea_water_speed", "m s-1"),
    "current_direction": ("sea_water_velocity_to_direction", "degree"),
    "longitude": ("longitude", "degrees_east"),
    "latitude": ("latitude", "degrees_north"),
    "quality_flag": ("quality_flag", "1"),
}
NO_RESULT = 32


def rejected(results):
    return (results.quality_flag.values & NO_RESULT) != 0


def close(actual, expected, relative, what):
    np.testing.assert_allclose(actual, expected, rtol=relative, err_msg=what)


def coordinates_have_no_fill(file):
    """Coordinate variables, which share their name with their dimension, have all their values."""
    coordinates = set(file.variables) & set(file.dimensions)
    assert "time" in coordinates and len(coordinates) >= 3, coordinates
    for name in coordinates:
        assert not {"_FillValue", "missing_value"} & set(file[name].ncattrs()), name


def names(path):
    """Names, units and attributes of the conventions."""
    with netCDF4.Dataset(path) as file:
        assert file.Conventions == "CF-1.8"
        for name, (standard, units) in STANDARD_NAMES.items():
            assert file[name].standard_name == standard, name
            assert file[name].units == units, name
        flags = file["quality_flag"]
        assert len(flags.flag_masks) == len(flags.flag_meanings.split()) == 12
        assert flags.flag_masks.dtype == flags.dtype
        assert len(file["spectrum_source"].flag_values) == 3
        assert "ancillary_variables" not in file["samples"].ncattrs()  # rejected bursts have them
        assert file["time"].bounds == "time_bnds" and file["time"].axis == "T"
        assert file["time_bnds"].dimensions == ("time", "bnds")
        for name in ("hm0", "variance_density", "variance_density_pressure",
                     "variance_density_velocity", "variance_density_surface_track", "efth"):
            assert file[name].ancillary_variables == "quality_flag", name
        coordinates_have_no_fill(file)
        assert "_FillValue" not in file["time_bnds"].ncattrs()
        for name, variable in file.variables.items():
            if variable.dtype == np.float32 and variable.dimensions:
                assert variable.filters()["zlib"], name
                assert name in file.dimensions or np.isnan(variable._FillValue), name
            if "time" in variable.dimensions and name not in ("time", "time_bnds"):
                assert variable.coordinates == "longitude latitude", name


def decodes(path):
    """xarray opens the file, times and position are coordinates, energy is where it should be."""
    results = xr.open_dataset(path)
    assert {"time", "freq", "dir", "longitude", "latitude"} <= set(results.coords)
    assert np.issubdtype(results.time.dtype, np.datetime64)
    assert float(results.longitude) == 4.25 and float(results.latitude) == 52.5
    assert (np.diff(results.dir) > 0).all() and 0 <= results.dir.min() and results.dir.max() < 360
    bad = rejected(results)
    assert bad.any() and not bad.all()
    length = (results.time_bnds[:, 1] - results.time_bnds[:, 0]) / np.timedelta64(1, "s")
    assert (length == 512).all(), length
    assert (results.time_bnds[:, 0] == results.time).all()
    for name, variable in results.data_vars.items():
        if variable.dtype == np.float32 and "true" not in name:
            assert not (variable == -9).any(), name
        if "density" in name or name == "efth":
            assert not (variable < 0).any(), name
    step = float(results.freq[1] - results.freq[0])
    good = results.isel(time=~bad)
    width = 360 / results.sizes["dir"]
    energy = good.efth.sum("dir", skipna=False) * width
    known = energy.notnull()
    close(energy.where(known, 0), good.variance_density.where(known, 0), 1e-5, "sum over dir")
    # efth knows no energy above the aliasing limit, hm0 that of all frequencies.
    close(4 * np.sqrt(good.variance_density.sum("freq") * step), good.hm0, 0.02, "hm0")
    close(4 * np.sqrt(energy.sum("freq") * step), good.hm0, 0.05, "hm0 of efth")
    for name in ("hm0", "tp", "mean_direction", "efth", "variance_density", "wavenumber",
                 "degrees_of_freedom"):
        assert results[name][bad].isnull().all(), name
        assert results[name][~bad].notnull().any(), name
    assert all((results.rejection_reason.values != "") == bad)
    assert (good.missing_samples >= 0).all() and (good.samples == 1024).all()


def timeless(path):
    """Of two bursts the first has no time."""
    with netCDF4.Dataset(path) as file:
        file.set_auto_mask(False)
        assert list(np.isnan(file["time"][:])) == [True, False], file["time"][:]
    assert list(np.isnat(xr.open_dataset(path).time.values)) == [True, False]


def words(variable, value):
    """What the bits or the value of a flag mean by the file's own attributes."""
    meanings = variable.flag_meanings.split()
    if "flag_masks" in variable.ncattrs():
        return {word for mask, word in zip(variable.flag_masks, meanings) if mask & int(value)}
    return meanings[list(variable.flag_values).index(value)]


def flags(path):
    """The bursts of the sample: good, holed, without a track, tilted, with gaps."""
    with netCDF4.Dataset(path) as file:
        said = [words(file["quality_flag"], value) for value in file["quality_flag"][:]]
        assert said == [set(), {"no_result"}, {"no_track"}, {"tilt"}, set()], said
        source = file["spectrum_source"]
        assert [None if value is np.ma.masked else words(source, value) for value in source[:]] == [
            "surface_track", None, "pressure", "surface_track", "surface_track"]
        assert list(file["method_used"][[0, 2]]) == [4, 3]
        track = np.ma.filled(file["variance_density_surface_track"][:], np.nan)
        assert (np.isnan(track).all(axis=1) == [False, True, True, False, False]).all()


def moments(path):
    """Parameters follow from the spectra beside them, directions from the coefficients."""
    results = xr.open_dataset(path)
    good = results.isel(time=~rejected(results))
    f = good.freq.astype(float)
    density = good.variance_density.astype(float)
    m0, m2, m1 = (float_sum(density * f**power) for power in (0, 2, -1))
    # The surface track's own axis goes on where that of variance_density ends.
    close(good.tm02, np.sqrt(m0 / m2), 0.05, "tm02")
    close(good.tm_10, m1 / m0, 0.05, "tm_10")
    close(good.tp, 1 / f[density.argmax("freq")], 0.06, "tp")  # it lies between bins
    measured = good.isel(time=(good.spectrum_source == 3).values)
    assert (measured.h_max > measured.h_tenth).all() and (measured.h_tenth > measured.h_third).all()
    close(measured.tz, measured.tm02, 0.2, "tz")
    close(measured.h_third, measured.hm0, 0.1, "h_third")
    close(measured.h_tenth, 1.27 * measured.h_third, 0.12, "h_tenth")
    close(measured.t_third, measured.tp, 0.25, "t_third")
    known = density > 0.05 * density.max("freq")  # where there are waves
    a1, b1, a2, b2 = (good[name].astype(float) for name in ("a1", "b1", "a2", "b2"))
    assert abs(turn(np.degrees(np.arctan2(b1, a1)) - good.direction)).where(known, 0).max() < 0.1
    spread = np.degrees(np.sqrt(2 * (1 - np.hypot(a1, b1))))
    close(spread.where(known, 0), good.spread.where(known, 0), 0.01, "spread")
    angle = np.radians(good.dir.astype(float))
    share = good.efth / good.efth.sum("dir")
    peak = density.argmax("freq")
    for coefficient, shape in ((a1, np.cos(angle)), (b1, np.sin(angle)), (a2, np.cos(2 * angle)),
                               (b2, np.sin(2 * angle))):
        np.testing.assert_allclose((share * shape).sum("dir")[dict(freq=peak)],
                                   coefficient[dict(freq=peak)], atol=0.05)


def float_sum(values):
    return values.sum("freq").values


def tails(path):
    """Above its cut-off a spectrum is a tail f^-4.5, and not below it; raised densities are 0."""
    results = xr.open_dataset(path)
    good = results.isel(time=~rejected(results))
    f = good.freq.values.astype(float)
    for name in ("pressure", "velocity"):
        level = good[f"variance_density_{name}"].values.astype(float) * f**4.5
        for cutoff, line in zip(good[f"{name}_cutoff_frequency"].values, level):
            last = int(np.argmin(abs(f - cutoff)))
            np.testing.assert_allclose(line[last:], line[-1], rtol=2e-5, err_msg=name)
            assert abs(line[last - 1] / line[-1] - 1) > 1e-4, name
    zeros = sum((good[name] == 0).sum(dim) for name, dim in (
        ("variance_density", "freq"), ("variance_density_pressure", "freq"),
        ("variance_density_velocity", "freq"),
        ("variance_density_surface_track", "freq_surface_track")))
    assert (good.raised_densities == zeros).all(), (good.raised_densities.values, zeros.values)
    assert not good.variance_density_velocity.equals(good.variance_density_pressure)
    # The simulated sea, whose bed is half a metre below the sensor.
    assert abs(good.water_depth - 15).max() < 0.1, good.water_depth.values


def dispersion(path):
    """(2 pi f)^2 = g k tanh(k h)"""
    results = xr.open_dataset(path)
    good = results.isel(time=~rejected(results))
    k = good.wavenumber.astype(float)
    left = (2 * np.pi * good.freq.astype(float)) ** 2
    right = 9.81 * k * np.tanh(k * good.water_depth.astype(float))
    close(left.broadcast_like(right), right.transpose(*left.broadcast_like(right).dims), 1e-4,
          "dispersion")


def read_swan(path):
    """Times, position, frequencies, directions and spectra [m2/Hz/degree] of a SWAN file."""
    lines = [line for line in open(path) if not line.startswith("$")]
    at = 0

    def take():
        nonlocal at
        at += 1
        return lines[at - 1]

    def numbers():
        return np.array([float(take().split()[0]) for _ in range(int(take().split()[0]))])

    assert take().split()[:2] == ["SWAN", "1"]
    assert take().split()[0] == "TIME" and take().split()[0] == "1"
    kind = take().split()[0]
    assert kind in ("LONLAT", "LOCATIONS") and take().split()[0] == "1"
    place = [float(word) for word in take().split()]
    assert take().split()[0] == "AFREQ"
    frequencies = numbers()
    assert take().split()[0] == "NDIR"
    directions = numbers()
    assert take().split()[0] == "QUANT" and take().split()[0] == "1"
    assert take().split()[0] == "VaDens" and take().split()[0] == "m2/Hz/degr"
    take()
    times, spectra = [], []
    while at < len(lines):
        day, clock = take().split()[0].split(".")
        times.append(np.datetime64(f"{day[:4]}-{day[4:6]}-{day[6:]}T"
                                   f"{clock[:2]}:{clock[2:4]}:{clock[4:]}"))
        kind = take().split()[0]
        if kind == "FACTOR":
            factor = float(take())
            rows = [[int(word) for word in take().split()] for _ in frequencies]
            assert np.max(rows) < 100000 and np.min(rows) >= 0
            spectra.append(factor * np.array(rows))
        else:
            assert kind in ("ZERO", "NODATA"), kind
            spectra.append(np.full((len(frequencies), len(directions)),
                                   np.nan if kind == "NODATA" else 0.0))
    return times, kind, place, frequencies, directions, np.array(spectra)


def mean_direction(spectrum, directions):
    """Of spectra by frequency and direction, energy-weighted."""
    angle = np.radians(directions)
    return np.degrees(np.arctan2((spectrum * np.sin(angle)).sum((-1, -2)),
                                 (spectrum * np.cos(angle)).sum((-1, -2)))) % 360


def turn(degrees):
    return (degrees + 180) % 360 - 180


def expected_model_spectra(results):
    """Height, direction that waves come from, and which bursts have a spectrum."""
    bad = rejected(results)
    good = results.isel(time=~bad)
    directions = good.dir.values
    if good.dir.attrs["standard_name"] == "sea_surface_wave_to_direction":
        directions = (directions + 180) % 360
    grid = np.nan_to_num(good.efth.transpose("time", "freq", "dir").values.astype(float))
    step = float(results.freq[1] - results.freq[0])
    m0 = good.variance_density.sum("freq").values * step
    return 4 * np.sqrt(m0), mean_direction(grid, directions), ~bad


def swan(path, swan_path):
    results = xr.open_dataset(path)
    times, _, place, frequencies, directions, spectra = read_swan(swan_path)
    height, direction, good = expected_model_spectra(results)
    assert (np.array(times) == results.time.values.astype("datetime64[s]")).all()
    close(place, [4.25, 52.5], 1e-9, "position")
    close(frequencies, results.freq, 1e-4, "frequencies")
    assert (np.diff(directions) > 0).all() and directions[0] >= 0 and directions[-1] < 360
    assert np.isnan(spectra[~good]).all() and not np.isnan(spectra[good]).any()
    step = frequencies[1] - frequencies[0]
    m0 = spectra[good].sum((1, 2)) * step * 360 / len(directions)
    close(4 * np.sqrt(m0), height, 2e-3, "height")
    assert np.abs(turn(mean_direction(spectra[good], directions) - direction)).max() < 1.5


def ww3(path, ww3_path):
    results = xr.open_dataset(path)
    model = xr.open_dataset(ww3_path)
    height, direction, good = expected_model_spectra(results)
    with netCDF4.Dataset(ww3_path) as raw:
        assert raw["time"].units == "days since 1990-01-01 00:00:00"
        assert set(raw.dimensions) == {"time", "station", "frequency", "direction", "string16"}
        assert raw["efth"].dimensions == ("time", "station", "frequency", "direction")
        assert raw["efth"].units == "m2 s rad-1"
        assert raw["direction"].standard_name == "sea_surface_wave_to_direction"
        assert raw["station_name"].dimensions == ("station", "string16")
        coordinates_have_no_fill(raw)
    seconds = np.abs(model.time.values - results.time.values) / np.timedelta64(1, "ms")
    assert seconds.max() < 1
    close(model.longitude, np.full(model.longitude.shape, 4.25), 1e-6, "longitude")
    close(model.frequency2 - model.frequency1, np.full(model.sizes["frequency"], 0.01), 1e-3,
          "bands")
    close((model.frequency1 + model.frequency2) / 2, results.freq, 1e-4, "middle of the bands")
    close(model.curdir[good, 0], results.current_direction[good], 1e-6, "current direction")
    assert model.wnd.isnull().all() and model.wnddir.isnull().all()
    close(model.dpt[good, 0], results.water_depth[good], 1e-6, "depth")
    close(model.cur[good, 0], results.current_speed[good], 1e-6, "current")
    spectra = model.efth.values[:, 0].astype(float)
    assert np.isnan(spectra[~good]).all() and not np.isnan(spectra[good]).any()
    m0 = spectra[good].sum((1, 2)) * 0.01 * 2 * np.pi / model.sizes["direction"]
    close(4 * np.sqrt(m0), height, 1e-3, "height")
    to = mean_direction(spectra[good], model.direction.values)
    assert np.abs(turn(to - direction - 180)).max() < 1.5


def same(value, text):
    """A number of the file and what a text file says of it."""
    missing = text in ("", None)
    return missing if np.isnan(value) else not missing and np.float32(text) == np.float32(value)


def texts(path, csv_path, json_path):
    """Every number of the CSV and JSON files is that of the result file."""
    results = xr.open_dataset(path, decode_times=False, mask_and_scale=True)
    rows = list(csv.DictReader(open(csv_path, newline="")))
    document = json.load(open(json_path))
    assert len(rows) == len(document["bursts"]) == results.sizes["time"]
    close(document["freq"], results.freq, 1e-7, "freq")
    close(document["freq_surface_track"], results.freq_surface_track, 1e-7, "freq_surface_track")
    assert document["attributes"]["Conventions"] == "CF-1.8"
    columns = {title.split(" [")[0]: title for title in rows[0]}
    for i, (row, entry) in enumerate(zip(rows, document["bursts"])):
        moment = str(np.datetime64(int(results.time[i]), "s")) + "Z"
        assert row["time [UTC]"] == entry["time"] == moment
        assert entry["rejection_reason"] == row["rejection_reason"] == results.rejection_reason[i]
        for name, variable in results.data_vars.items():
            if variable.dims == ("time",) and variable.dtype != object:
                assert same(float(variable[i]), row[columns[name]]), name
                assert same(float(variable[i]), entry[name]), name
            elif variable.dims in (("time", "freq"), ("time", "freq_surface_track")):
                values = np.array(entry["spectra"][name], dtype=np.float32)
                np.testing.assert_array_equal(values, variable[i].values.astype(np.float32), name)
    assert set(" ".join(row["quality"] for row in rows).split()) >= {"no_result"}


if __name__ == "__main__":
    globals()[sys.argv[1]](*sys.argv[2:])
