// The ways to show a level: lit, textures alone, lightmap alone, regions.
import { BufferAttribute, Color, MeshBasicMaterial, NoColorSpace } from "three";

// The basic material divides the lightmap by pi, as light that leaves a surface in all directions.
const FULL = Math.PI;

function plain(texture) {
    if (!texture) return null;
    texture.colorSpace = NoColorSpace;
    texture.needsUpdate = true;
    return texture;
}

// The page in colour that the material's extras name, over the second texture coordinates.
async function lightmapOf(gltf, material) {
    const place = material.userData.lightmap;
    if (!place) return null;
    const texture = (await gltf.parser.getDependency("texture", place.index)).clone();
    texture.flipY = false;
    texture.channel = place.texCoord ?? 0;
    return plain(texture);
}

// Far hues for neighbouring numbers.
function colourRegions(geometry) {
    const regions = geometry.getAttribute("_region");
    if (!regions) return;
    const colours = new Float32Array(regions.count * 3);
    const colour = new Color();
    for (let i = 0; i < regions.count; i++) {
        colour.setHSL(regions.getX(i) * 0.618033988749895 % 1, 0.5, 0.6).toArray(colours, 3 * i);
    }
    geometry.setAttribute("color", new BufferAttribute(colours, 3));
}

// A function that shows the level in a mode.
export async function makeModes(gltf) {
    const meshes = [];
    gltf.scene.traverse((node) => { if (node.isMesh) meshes.push(node); });
    const shown = await Promise.all(meshes.map(async (mesh) => {
        const map = plain(mesh.material.map);
        const lightMap = await lightmapOf(gltf, mesh.material);
        const lit = { lightMap, lightMapIntensity: FULL };
        colourRegions(mesh.geometry);
        return {
            lit: new MeshBasicMaterial({ map, ...lit }),
            textures: new MeshBasicMaterial({ map }),
            lightmap: new MeshBasicMaterial(lightMap ? lit : { color: 0x303030 }),
            regions: new MeshBasicMaterial({ vertexColors: true, ...lit }),
        };
    }));
    return (mode) => meshes.forEach((mesh, i) => { mesh.material = shown[i][mode]; });
}
