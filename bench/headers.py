"""The projection files that a conversion needs beside its SDF file, for the
bench scripts: a Header.prj for -shp and a Header.mif for -mif."""
import os

PRJ = ('PROJCS["GDA_1994_MGA_Zone_55",GEOGCS["GCS_GDA_1994",DATUM["D_GDA_1994",'
       'SPHEROID["GRS_1980",6378137.0,298.257222101]],PRIMEM["Greenwich",0.0],'
       'UNIT["Degree",0.0174532925199433]],PROJECTION["Transverse_Mercator"],'
       'PARAMETER["False_Easting",500000.0],PARAMETER["False_Northing",10000000.0],'
       'PARAMETER["Central_Meridian",147.0],PARAMETER["Scale_Factor",0.9996],'
       'PARAMETER["Latitude_Of_Origin",0.0],UNIT["Meter",1.0]]\r\n')
MIF = ('Version 300\r\nCharset "WindowsLatin1"\r\nDelimiter ","\r\n'
       'CoordSys Earth Projection 8, 116, "m", 147, 0, 0.9996, 500000, 10000000\r\n'
       'Columns 1\r\n  ID Integer\r\nData\r\n\r\n')


def write_headers(folder):
    """Writes Header.prj and Header.mif into folder."""
    for name, text in (("Header.prj", PRJ), ("Header.mif", MIF)):
        with open(os.path.join(folder, name), "w", newline="") as f:
            f.write(text)
